#include "plugin-link/InspectionDecision.h"

#include <filesystem>

#include <gmock/gmock.h>

#include "foundation/Exception.h"
#include "platform/Windows.h"
#include "tests/support/FailingLog.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using test_support::LogCapture;
using test_support::TemporaryFolder;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using vorlek::InspectionDecision;

std::wstring Answer(const std::wstring& modifications) {
    return L"<decision result=\"1\"><DataModifications>" + modifications + L"</DataModifications></decision>";
}

std::wstring Attachment(const std::filesystem::path& path, const std::wstring& name) {
    return L"<Attachment path=\"" + path.wstring() + L"\" displayName=\"" + name + L"\" />";
}

std::filesystem::path NewFile(const TemporaryFolder& folder, const std::wstring& name) {
    auto path = folder / name;
    test_support::WriteBytes(path, "content");
    return path;
}

} // namespace

TEST(InspectionDecision, OfTheAddInsOwnIsWrittenAsXml) {
    const LogCapture log;
    const InspectionDecision decision(std::int32_t{-1});
    EXPECT_EQ(decision.GetResult(), -1);
    EXPECT_EQ(decision.GetResultText(), L"<decision result=\"-1\" />");
    EXPECT_FALSE(decision.HasModifications());
    EXPECT_TRUE(decision.GetAutomaticFileDeletion());
    EXPECT_THAT(log.Texts(L"INFO"), ElementsAre(L"Inspection decision A: -1"));
    EXPECT_THAT(log.Lines().back().logger, testing::EndsWith(L"vorlek.InspectionDecision"));
}

TEST(InspectionDecision, ReadsAWholeAnswer) {
    const std::wstring text = Answer(L"<EmailSubject value=\"[Confidential] \u00fc &amp; more\" />"
                                     L"<EmailBody path=\"C:\\none\\label.html\" /><EmailAttachments>"
                                     L"<Attachment path=\"C:\\none\\b\" displayName=\"report.docx\" />"
                                     L"<Attachment path=\"C:\\none\\a\" displayName=\"plan.xlsx\" />"
                                     L"</EmailAttachments>");
    const LogCapture log;
    const InspectionDecision decision(text);
    EXPECT_EQ(decision.GetResultText(), L"");
    EXPECT_EQ(decision.GetResult(), 1);
    EXPECT_EQ(decision.GetSubjectLabel(), L"[Confidential] \u00fc & more");
    EXPECT_EQ(decision.GetBodyLabelPath(), L"C:\\none\\label.html");
    EXPECT_THAT(decision.GetAttachments(),
                ElementsAre(Pair(L"C:\\none\\a", L"plan.xlsx"), Pair(L"C:\\none\\b", L"report.docx")));
    EXPECT_TRUE(decision.HasModifications());
    EXPECT_THAT(log.Texts(L"INFO"), ElementsAre(L"Inspection decision B: " + text));
}

TEST(InspectionDecision, BlocksWithTwoAndNothingElse) {
    const InspectionDecision decision(L"<decision result=\"2\" />");
    EXPECT_EQ(decision.GetResult(), InspectionDecision::kBlock);
    EXPECT_FALSE(decision.HasModifications());
    EXPECT_EQ(InspectionDecision(L"<decision result=\"0x2\" />").GetResult(), InspectionDecision::kBlock);
}

TEST(InspectionDecision, HasNoModificationsInAnEmptyList) {
    const InspectionDecision decision(Answer(L""));
    EXPECT_EQ(decision.GetResult(), 1);
    EXPECT_FALSE(decision.HasModifications());
    EXPECT_FALSE(InspectionDecision(Answer(L"<EmailAttachments />")).HasModifications());
}

TEST(InspectionDecision, CountsEachKindOfModification) {
    EXPECT_TRUE(InspectionDecision(Answer(L"<EmailSubject value=\"x\" />")).HasModifications());
    EXPECT_TRUE(InspectionDecision(Answer(L"<EmailBody path=\"C:\\none\\x\" />")).HasModifications());
    EXPECT_TRUE(
        InspectionDecision(Answer(L"<EmailAttachments>" + Attachment(L"C:\\none\\x", L"x") + L"</EmailAttachments>"))
            .HasModifications());
    EXPECT_FALSE(InspectionDecision(Answer(L"<EmailSubject value=\"\" />")).HasModifications());
}

TEST(InspectionDecision, KeepsTheVerdictWhenASubjectHasNoValue) {
    const LogCapture log;
    const InspectionDecision decision(Answer(L"<EmailSubject /><EmailBody path=\"C:\\none\\x\" />"));
    EXPECT_EQ(decision.GetResult(), 1);
    EXPECT_EQ(decision.GetSubjectLabel(), L"");
    EXPECT_EQ(decision.GetBodyLabelPath(), L"");
    ASSERT_EQ(log.Texts(L"ERROR").size(), 1U);
    EXPECT_THAT(log.Texts(L"ERROR")[0], testing::StartsWith(L"Error parsing inspection message result: "));
}

TEST(InspectionDecision, StopsAtABodyWithoutAPathAndKeepsTheSubjectBefore) {
    const LogCapture log;
    const InspectionDecision decision(Answer(L"<EmailSubject value=\"label\" /><EmailBody /><EmailAttachments>" +
                                             Attachment(L"C:\\none\\a", L"a") + L"</EmailAttachments>"));
    EXPECT_EQ(decision.GetResult(), 1);
    EXPECT_EQ(decision.GetSubjectLabel(), L"label");
    EXPECT_EQ(decision.GetBodyLabelPath(), L"");
    EXPECT_THAT(decision.GetAttachments(), IsEmpty());
    ASSERT_EQ(log.Texts(L"ERROR").size(), 1U);
    EXPECT_THAT(log.Texts(L"ERROR")[0], testing::StartsWith(L"Error parsing inspection message result: "));
}

TEST(InspectionDecision, StopsAtAnAttachmentWithoutAPath) {
    const InspectionDecision decision(Answer(L"<EmailAttachments>" + Attachment(L"C:\\none\\a", L"first") +
                                             L"<Attachment displayName=\"second\" />" +
                                             Attachment(L"C:\\none\\c", L"third") + L"</EmailAttachments>"));
    EXPECT_THAT(decision.GetAttachments(), ElementsAre(Pair(L"C:\\none\\a", L"first")));
    EXPECT_EQ(decision.GetResult(), 1);
}

TEST(InspectionDecision, StopsAtAnAttachmentWithoutANameAndKeepsThoseBefore) {
    const InspectionDecision decision(Answer(L"<EmailAttachments>" + Attachment(L"C:\\none\\a", L"first") +
                                             L"<Attachment path=\"C:\\none\\b\" />" +
                                             Attachment(L"C:\\none\\c", L"third") + L"</EmailAttachments>"));
    EXPECT_THAT(decision.GetAttachments(), ElementsAre(Pair(L"C:\\none\\a", L"first")));
    EXPECT_EQ(decision.GetResult(), 1);
}

TEST(InspectionDecision, KeepsTheLaterNameOfOnePath) {
    const InspectionDecision decision(Answer(L"<EmailAttachments>" + Attachment(L"C:\\none\\a", L"first") +
                                             Attachment(L"C:\\none\\a", L"second") + L"</EmailAttachments>"));
    EXPECT_THAT(decision.GetAttachments(), ElementsAre(Pair(L"C:\\none\\a", L"second")));
}

TEST(InspectionDecision, DoesNotMindTheRootsName) {
    EXPECT_EQ(InspectionDecision(L"<?xml version=\"1.0\"?><verdict result=\"7\"/>").GetResult(), 7);
}

TEST(InspectionDecision, TakesAMisspeltListForNone) {
    const LogCapture log;
    const InspectionDecision decision(
        L"<decision result=\"1\"><DataModification><EmailSubject value=\"x\"/></DataModification></decision>");
    EXPECT_FALSE(decision.HasModifications());
    EXPECT_THAT(log.Texts(L"ERROR"), IsEmpty());
}

TEST(InspectionDecision, SkipsOtherElementsAmongTheAttachments) {
    const InspectionDecision decision(
        Answer(L"<EmailAttachments><Other /><!-- x -->" + Attachment(L"C:\\none\\a", L"a") + L"</EmailAttachments>"));
    EXPECT_THAT(decision.GetAttachments(), ElementsAre(Pair(L"C:\\none\\a", L"a")));
}

TEST(InspectionDecision, BlocksWhenItCannotBeRead) {
    for (const wchar_t* text : {L"", L"no document", L"<decision", L"<decision />", L"<?xml version=\"1.0\"?>"}) {
        const LogCapture log;
        const InspectionDecision decision{std::wstring(text)};
        EXPECT_EQ(decision.GetResult(), InspectionDecision::kBlock) << text;
        ASSERT_EQ(log.Texts(L"ERROR").size(), 1U) << text;
        EXPECT_THAT(log.Texts(L"ERROR")[0], testing::StartsWith(L"Error parsing inspection message result: "));
        EXPECT_GT(log.Texts(L"ERROR")[0].size(), std::wstring(L"Error parsing inspection message result: ").size());
    }
}

TEST(InspectionDecision, BlocksWhereverItIsCutOff) {
    const std::wstring text = Answer(L"<EmailSubject value=\"label\" /><EmailAttachments>" +
                                     Attachment(L"C:\\none\\a", L"a &amp; b") + L"</EmailAttachments>");
    ASSERT_EQ(InspectionDecision(text).GetResult(), 1);
    for (std::size_t length = 0; length < text.size(); ++length) {
        const LogCapture log;
        const InspectionDecision decision(text.substr(0, length));
        EXPECT_EQ(decision.GetResult(), InspectionDecision::kBlock) << length;
        EXPECT_FALSE(decision.HasModifications());
        EXPECT_EQ(log.Texts(L"ERROR").size(), 1U);
    }
}

TEST(InspectionDecision, BlocksForXmlThatWouldExhaustItsReader) {
    const auto repeated = [](const std::wstring& text, int times) {
        std::wstring all;
        for (int time = 0; time < times; ++time) {
            all += text;
        }
        return all;
    };
    const std::wstring start = L"<decision result=\"1\">";
    const std::wstring texts[] = {
        start + repeated(L"<a>", 100'000) + repeated(L"</a>", 100'000) + L"</decision>",
        start + repeated(L"<a>", 100'000), L"<decision result=\"1\" " + repeated(L"a=\"\" ", 100'000) + L"/>",
        L"<!DOCTYPE decision><decision/>" + start + L"</decision>",
        L"<!DOCTYPE decision [<!ENTITY a \"1\"><!ENTITY b \"&a;&a;\">]><decision result=\"&b;\" />"};
    for (const std::wstring& text : texts) {
        const LogCapture log;
        EXPECT_EQ(InspectionDecision(text).GetResult(), InspectionDecision::kBlock) << text.substr(0, 60);
        EXPECT_EQ(log.Texts(L"ERROR").size(), 1U);
    }
}

TEST(InspectionDecision, BlocksAndSaysSoAtTheHighestLevelWhenReadingFailsInAnotherWay) {
    const LogCapture log;
    const test_support::FailingLog failing(L"Inspection decision B: <decision result=\"1\" />", [] {
        throw vorlek::IOException(L"Disk.cpp", 7, L"vorlek::Disk::Read", L"broken");
    });
    const InspectionDecision decision(std::wstring(L"<decision result=\"1\" />"));
    EXPECT_EQ(decision.GetResult(), InspectionDecision::kBlock);
    EXPECT_FALSE(decision.HasModifications());
    EXPECT_THAT(log.Texts(L"ERROR"), IsEmpty());
    EXPECT_THAT(log.Texts(L"FATAL"), ElementsAre(L"Error parsing inspection message result. Disk.cpp(7): "
                                                 L"vorlek::Disk::Read: IOException: broken"));
}

TEST(InspectionDecision, TakesItsFilesAlong) {
    const TemporaryFolder folder;
    const auto body = NewFile(folder, L"body.html");
    const auto first = NewFile(folder, L"a \u00fc.tmp");
    const auto second = NewFile(folder, L"b.tmp");
    const auto other = NewFile(folder, L"other.tmp");
    const LogCapture log;
    {
        const InspectionDecision decision(Answer(L"<EmailBody path=\"" + body.wstring() + L"\" /><EmailAttachments>" +
                                                 Attachment(second, L"B.pdf") + Attachment(first, L"A.pdf") +
                                                 L"</EmailAttachments>"));
        EXPECT_TRUE(exists(body) && exists(first) && exists(second));
    }
    EXPECT_FALSE(exists(body) || exists(first) || exists(second));
    EXPECT_TRUE(exists(other));
    const auto infos = log.Texts(L"INFO");
    EXPECT_THAT(std::vector(infos.begin() + 1, infos.end()),
                ElementsAre(L"Deleting email body file: " + body.wstring(),
                            L"Deleting email attachment file (A.pdf): " + first.wstring(),
                            L"Deleting email attachment file (B.pdf): " + second.wstring()));
    EXPECT_THAT(log.Texts(L"DEBUG"), ElementsAre(L"Deleting 2 email attachment files..."));
    EXPECT_THAT(log.Texts(L"ERROR"), IsEmpty());
}

TEST(InspectionDecision, GoesOnPastAnAttachmentThatIsGone) {
    const TemporaryFolder folder;
    const auto gone = folder / L"a.tmp";
    const auto there = NewFile(folder, L"b.tmp");
    const LogCapture log;
    {
        const InspectionDecision decision(
            Answer(L"<EmailAttachments>" + Attachment(gone, L"A") + Attachment(there, L"B") + L"</EmailAttachments>"));
    }
    EXPECT_FALSE(exists(there));
    EXPECT_THAT(log.Texts(L"DEBUG"), ElementsAre(L"Deleting 2 email attachment files...",
                                                 L"Email attachment file not found (A): " + gone.wstring()));
}

TEST(InspectionDecision, LeavesItsFilesWhenToldSo) {
    const TemporaryFolder folder;
    const auto body = NewFile(folder, L"body.html");
    const LogCapture log;
    {
        InspectionDecision decision(Answer(L"<EmailBody path=\"" + body.wstring() + L"\" />"));
        decision.SetAutomaticFileDeletion(false);
    }
    EXPECT_TRUE(exists(body));
    EXPECT_THAT(log.Texts(L"DEBUG"), ElementsAre(L"Automatic file deletion is disabled."));
}

TEST(InspectionDecision, LogsARemovalThatFailsAndRemovesTheRest) {
    const TemporaryFolder folder;
    const auto held = NewFile(folder, L"a.tmp");
    const auto rest = NewFile(folder, L"b.tmp");
    const HANDLE holder = CreateFileW(held.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(holder, INVALID_HANDLE_VALUE);
    const LogCapture log;
    {
        const InspectionDecision decision(
            Answer(L"<EmailAttachments>" + Attachment(held, L"A") + Attachment(rest, L"B") + L"</EmailAttachments>"));
    }
    CloseHandle(holder);
    EXPECT_TRUE(exists(held));
    EXPECT_FALSE(exists(rest));
    ASSERT_EQ(log.Texts(L"ERROR").size(), 1U);
    EXPECT_THAT(log.Texts(L"ERROR")[0],
                testing::EndsWith(L"Failed to remove file <" + held.wstring() + L"> error: 32"));
}

TEST(InspectionDecision, RemovesTheRestWhenEvenTheLogFails) {
    const TemporaryFolder folder;
    const auto body = NewFile(folder, L"body.html");
    const auto first = NewFile(folder, L"a.tmp");
    const auto second = NewFile(folder, L"b.tmp");
    const auto fail = [] { throw std::runtime_error("the log is full"); };
    const LogCapture log;
    const test_support::FailingLog failing[] = {{L"Deleting email body file: " + body.wstring(), fail},
                                                {L"Deleting 2 email attachment files...", fail},
                                                {L"Deleting email attachment file (A): " + first.wstring(), fail}};
    {
        const InspectionDecision decision(Answer(L"<EmailBody path=\"" + body.wstring() + L"\" /><EmailAttachments>" +
                                                 Attachment(first, L"A") + Attachment(second, L"B") +
                                                 L"</EmailAttachments>"));
    }
    EXPECT_FALSE(exists(second));
    EXPECT_THAT(log.Texts(L"ERROR"), testing::Each(L"Failed to delete a file of the decision."));
    EXPECT_EQ(log.Texts(L"ERROR").size(), 3U);
}

TEST(InspectionDecision, SharesNothingWithAnotherButThePath) {
    const TemporaryFolder folder;
    const auto shared = NewFile(folder, L"shared.tmp");
    const auto own = NewFile(folder, L"own.tmp");
    const std::wstring first = Answer(L"<EmailAttachments>" + Attachment(shared, L"A") + L"</EmailAttachments>");
    const std::wstring second =
        Answer(L"<EmailAttachments>" + Attachment(own, L"B") + Attachment(shared, L"C") + L"</EmailAttachments>");
    auto one = std::make_unique<InspectionDecision>(first);
    auto other = std::make_unique<InspectionDecision>(second);
    one.reset();
    EXPECT_TRUE(exists(own));
    const LogCapture log;
    other.reset();
    EXPECT_FALSE(exists(own));
    EXPECT_TRUE(log.Has(L"DEBUG", L"Email attachment file not found (C): " + shared.wstring()));
}
