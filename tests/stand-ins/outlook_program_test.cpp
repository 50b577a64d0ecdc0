// outlook.exe: its options, and what it does with add-ins that cannot be loaded.
#include "stand-ins/outlook/CommandLine.h"
#include "tests/stand-ins/OutlookTest.h"

namespace stand_ins {
namespace {

std::string RefusalOf(const std::vector<std::wstring>& arguments) {
    try {
        ParseCommandLine(arguments);
        return "";
    } catch (const std::runtime_error& failure) {
        return failure.what();
    }
}

TEST(OutlookCommandLine, AllOptionsAreUnderstood) {
    const CommandLine line = ParseCommandLine({L"--profile",
                                               L"p",
                                               L"--version",
                                               L"15.0.0.1",
                                               L"--explorer",
                                               L"disabled",
                                               L"--strict-threads",
                                               L"--no-addins",
                                               L"--record",
                                               L"r.txt",
                                               L"--fail",
                                               L"MailItem.Send=0x80040119#2",
                                               L"--die",
                                               L"before:MailItem.Display",
                                               L"--die",
                                               L"after:MailItem.Send#3",
                                               L"--wait",
                                               L"5",
                                               L"--tell-shutdown",
                                               L"--keep-ids",
                                               L"--early-explorer",
                                               L"--figures",
                                               L"--read-boxes",
                                               L"--until",
                                               L"Done",
                                               L"--meanwhile",
                                               L"edit:Plans: draft",
                                               L"--meanwhile",
                                               L"close-explorer:",
                                               L"--meanwhile",
                                               L"die:Plans",
                                               L"--send",
                                               L"a.json",
                                               L"b.json"});
    EXPECT_EQ(line.outlook.profile, L"p");
    EXPECT_EQ(line.outlook.version, L"15.0.0.1");
    EXPECT_EQ(line.outlook.explorer, ExplorerState::Disabled);
    EXPECT_TRUE(line.outlook.strictThreads);
    EXPECT_FALSE(line.addIns);
    EXPECT_EQ(line.record, L"r.txt");
    EXPECT_EQ(line.faults.at(0).member, L"MailItem.Send");
    EXPECT_EQ(line.faults.at(0).result, static_cast<HRESULT>(0x80040119));
    EXPECT_EQ(line.faults.at(0).nth, 2u);
    ASSERT_EQ(line.deaths.size(), 2u);
    EXPECT_EQ(line.deaths[0].member, L"MailItem.Display");
    EXPECT_FALSE(line.deaths[0].after);
    EXPECT_EQ(line.deaths[0].nth, 1u);
    EXPECT_EQ(line.deaths[1].member, L"MailItem.Send");
    EXPECT_TRUE(line.deaths[1].after);
    EXPECT_EQ(line.deaths[1].nth, 3u);
    EXPECT_EQ(line.waitMs, 5000u);
    EXPECT_TRUE(line.outlook.keepsEntryIdOnMove);
    EXPECT_TRUE(line.earlyExplorer);
    EXPECT_TRUE(line.figures);
    EXPECT_TRUE(line.readBoxes);
    EXPECT_EQ(line.until, L"Done");
    ASSERT_EQ(line.deeds.size(), 3u);
    EXPECT_EQ(line.deeds[0].kind, Deed::Kind::Edit);
    EXPECT_EQ(line.deeds[0].text, L"Plans: draft");
    EXPECT_EQ(line.deeds[1].kind, Deed::Kind::CloseExplorer);
    EXPECT_EQ(line.deeds[1].text, L"");
    EXPECT_EQ(line.deeds[2].kind, Deed::Kind::Die);
    EXPECT_TRUE(line.tellShutdown);
    EXPECT_THAT(line.items, testing::ElementsAre(L"a.json", L"b.json"));
}

TEST(OutlookCommandLine, EmbeddingIsTakenInEverySpelling) {
    for (const wchar_t* spelling : {L"-Embedding", L"EMBEDDING", L"/embedding"}) {
        EXPECT_EQ(RefusalOf({spelling, L"--profile", L"p"}), "");
    }
}

TEST(OutlookCommandLine, WhatIsNotUnderstoodIsRefusedInOneLine) {
    EXPECT_EQ(RefusalOf({}), "--profile is missing");
    EXPECT_EQ(RefusalOf({L"--profile"}), "--profile wants a value");
    EXPECT_EQ(RefusalOf({L"--profile", L"p", L"--nonsense"}),
              "unknown option \"--nonsense\"; --help tells the known ones");
    EXPECT_EQ(RefusalOf({L"--profile", L"p", L"a.json"}), "unknown option \"a.json\"; --help tells the known ones");
    EXPECT_EQ(RefusalOf({L"--explorer", L"big"}), "--explorer is one of shown, disabled and missing, not \"big\"");
    EXPECT_EQ(RefusalOf({L"--fail", L"MailItem.Send"}),
              "--fail wants Class.Member=0xHRESULT or Class.Member=0xHRESULT#n, not \"MailItem.Send\"");
    EXPECT_EQ(RefusalOf({L"--fail", L"MailItem.Send=0"}), "the HRESULT of \"MailItem.Send=0\" is no failure");
    EXPECT_EQ(RefusalOf({L"--die", L"during:MailItem.Send"}),
              "--die wants before or after, a colon and Class.Member or Class.Member#n, not \"during:MailItem.Send\"");
    EXPECT_EQ(RefusalOf({L"--die", L"after:Send"}),
              "--die wants before or after, a colon and Class.Member or Class.Member#n, not \"after:Send\"");
    EXPECT_EQ(RefusalOf({L"--meanwhile", L"edit"}),
              "--meanwhile wants edit, move, delete, close-explorer or die, a colon and a text, not \"edit\"");
    EXPECT_EQ(RefusalOf({L"--meanwhile", L"burn:Plans"}),
              "--meanwhile wants edit, move, delete, close-explorer or die, a colon and a text, not \"burn:Plans\"");
    EXPECT_EQ(RefusalOf({L"--wait", L"soon"}), "\"soon\" holds no number where one is wanted");
}

class OutlookAddIns : public RunningOutlookTest {
protected:
    static constexpr const wchar_t* kKey = L"SOFTWARE\\Microsoft\\Office\\Outlook\\Addins\\StandIn.NoSuchAddIn";

    OutlookAddIns() { SetBehaviour(3); }
    ~OutlookAddIns() override { RegDeleteTreeW(HKEY_CURRENT_USER, kKey); }

    static void SetBehaviour(DWORD behaviour) {
        RegSetKeyValueW(HKEY_CURRENT_USER, kKey, L"LoadBehavior", REG_DWORD, &behaviour, sizeof behaviour);
    }
    static DWORD Behaviour() {
        DWORD behaviour = 0;
        DWORD size = sizeof behaviour;
        RegGetValueW(HKEY_CURRENT_USER, kKey, L"LoadBehavior", RRF_RT_REG_DWORD, nullptr, &behaviour, &size);
        return behaviour;
    }
    std::optional<AddInLoad> Load() {
        for (AddInLoad& load : outlook_.LoadAddIns()) {
            if (load.progId == L"StandIn.NoSuchAddIn") {
                return load;
            }
        }
        return std::nullopt;
    }
};

TEST_F(OutlookAddIns, LoadThatFailsIsToldAndNotTriedAgain) {
    const auto load = Load();
    ASSERT_TRUE(load);
    EXPECT_FALSE(load->loaded);
    EXPECT_EQ(load->failure, L"CLSIDFromProgID failed with 0x800401F3");
    EXPECT_EQ(Behaviour(), 2u);
    EXPECT_FALSE(Load());
}

TEST_F(OutlookAddIns, AddInThatIsNotToBeLoadedAtStartIsLeftAlone) {
    SetBehaviour(9);
    EXPECT_FALSE(Load());
    EXPECT_EQ(Behaviour(), 9u);
}

} // namespace
} // namespace stand_ins
