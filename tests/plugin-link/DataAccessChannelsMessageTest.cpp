#include "plugin-link/DataAccessChannelsMessage.h"

#include <cstring>

#include <gmock/gmock.h>

#include "plugin-link/Exceptions.h"
#include "tests/plugin-link/Memory.h"
#include "tests/plugin-link/Throws.h"

namespace {

using plugin_link_tests::Thrown;
using testing::HasSubstr;
using vorlek::DataAccessChannelsMessage;

const std::wstring kNoChannels = L"<channels />";
const std::wstring kInspectedLaunch = L"<ApplicationLaunch inspect=\"True\" />";

std::wstring Document(const std::wstring& content) {
    return L"<DataAccessChannelsMessage>" + content + L"</DataAccessChannelsMessage>";
}

DataAccessChannelsMessage WithChannels(const std::wstring& channels) {
    return DataAccessChannelsMessage(Document(L"<channels>" + channels + L"</channels>" + kInspectedLaunch));
}

DataAccessChannelsMessage WithLaunch(const std::wstring& launch) {
    return DataAccessChannelsMessage(Document(kNoChannels + launch));
}

DataAccessChannelsMessage WithPermissions(const std::wstring& permissions) {
    return DataAccessChannelsMessage(Document(kNoChannels + kInspectedLaunch + permissions));
}

std::wstring Permissions(const std::wstring& inspect, const std::wstring& list) {
    return L"<FilePermissions inspect=\"" + inspect + L"\"><Default /><List>" + list + L"</List></FilePermissions>";
}

std::wstring Permission(const std::wstring& path, const std::wstring& operation, const std::wstring& kind) {
    return L"<FilePermission path=\"" + path + L"\" operator=\"" + operation + L"\" class=\"" + kind + L"\" />";
}

std::uint32_t NumberAt(const BYTE* block, std::size_t offset) {
    std::uint32_t number = 0;
    std::memcpy(&number, block + offset, sizeof number);
    return number;
}

/// The block's bytes, the size in front of them included.
std::vector<BYTE> Whole(const BYTE* block) {
    return {block, block + 4 + NumberAt(block, 0)};
}

std::vector<std::int32_t> ActiveChannels(const DataAccessChannelsMessage& message) {
    std::vector<std::int32_t> active;
    for (std::int32_t channel = 0; channel < 10; ++channel) {
        if (message.IsChannelActivated(channel)) {
            active.push_back(channel);
        }
    }
    return active;
}

void ExpectUnreadable(const std::wstring& text, const std::wstring& words) {
    const auto failure =
        Thrown<vorlek::DataAccessChannelsMessageFormatException>([&] { DataAccessChannelsMessage message(text); });
    EXPECT_EQ(failure.GetMessage(), words) << text;
    EXPECT_EQ(failure.GetLocation(), L"vorlek::DataAccessChannelsMessage::DataAccessChannelsMessage");
}

} // namespace

TEST(DataAccessChannelsMessage, KnowsEachChannelByItsNumber) {
    const wchar_t* const names[] = {L"Paste",
                                    L"FileSystemRead",
                                    L"Print",
                                    L"Http",
                                    L"WPDDragAndDrop",
                                    L"WPDPaste",
                                    L"NetworkShareDragAndDrop",
                                    L"NetworkSharePaste",
                                    L"FTPDragAndDrop",
                                    L"FTPPaste"};
    for (std::int32_t number = 0; number < 10; ++number) {
        EXPECT_THAT(ActiveChannels(WithChannels(std::wstring(L"<channel>") + names[number] + L"</channel>")),
                    testing::ElementsAre(number));
    }
}

TEST(DataAccessChannelsMessage, ActivatesEveryChannelNamedOnce) {
    EXPECT_THAT(ActiveChannels(WithChannels(L"<channel>FTPPaste</channel><channel>Paste</channel>"
                                            L"<channel>Paste</channel>")),
                testing::ElementsAre(0, 9));
    EXPECT_THAT(ActiveChannels(WithChannels(L"")), testing::IsEmpty());
}

TEST(DataAccessChannelsMessage, SkipsChannelsThatItDoesNotKnow) {
    EXPECT_THAT(ActiveChannels(WithChannels(L"<channel>paste</channel><channel>Fax</channel><other>Http</other>"
                                            L"<channel> Http </channel><channel>Print</channel>")),
                testing::ElementsAre(2));
}

TEST(DataAccessChannelsMessage, RefusesAChannelWithoutAName) {
    for (const wchar_t* channel : {L"<channel />", L"<channel></channel>", L"<channel><name>Http</name></channel>"}) {
        ExpectUnreadable(Document(std::wstring(L"<channels>") + channel + L"</channels>" + kInspectedLaunch),
                         L"The element <channel> has no text");
    }
}

TEST(DataAccessChannelsMessage, RefusesTheNumberOfNoChannel) {
    const auto message = WithChannels(L"<channel>FTPPaste</channel>");
    EXPECT_TRUE(message.IsChannelActivated(9));
    const std::pair<std::int32_t, const wchar_t*> refused[] = {
        {-1, L"Invalid channel specified. Value is %d-1"},
        {10, L"Invalid channel specified. Value is %d10"},
        {12, L"Invalid channel specified. Value is %d12"},
        {INT32_MIN, L"Invalid channel specified. Value is %d-2147483648"}};
    for (const auto& [channel, words] : refused) {
        const auto failure = Thrown<vorlek::ArgumentOutOfRangeException>(
            [&, number = channel] { static_cast<void>(message.IsChannelActivated(number)); });
        EXPECT_EQ(failure.GetMessage(), words);
        EXPECT_EQ(failure.GetLocation(), L"vorlek::DataAccessChannelsMessage::IsChannelActivated");
    }
}

TEST(DataAccessChannelsMessage, TurnsTheInspectionOfLaunchesOffForExactlyOneWord) {
    EXPECT_TRUE(WithLaunch(L"<ApplicationLaunch inspect=\"False\" />").IsLaunchInspectionOff());
    for (const wchar_t* word : {L"false", L"FALSE", L"True", L"", L"0", L" False"}) {
        EXPECT_FALSE(
            WithLaunch(std::wstring(L"<ApplicationLaunch inspect=\"") + word + L"\" />").IsLaunchInspectionOff())
            << word;
    }
}

TEST(DataAccessChannelsMessage, HasEmptyBlocksWithoutPermissions) {
    const auto message = WithPermissions(L"");
    EXPECT_EQ(Whole(message.GetUninspectedPermissions()), std::vector<BYTE>(4));
    EXPECT_EQ(Whole(message.GetInspectedPermissions()), std::vector<BYTE>(4));
    EXPECT_NE(message.GetUninspectedPermissions(), message.GetInspectedPermissions());
}

TEST(DataAccessChannelsMessage, WritesARecordForEachPermission) {
    const auto message = WithPermissions(
        Permissions(L"False", Permission(L"C:\\", L"7", L"258") + Permission(L"\u00e9\U0001F600x", L"-1", L"0")));
    EXPECT_EQ(Whole(message.GetUninspectedPermissions()),
              (std::vector<BYTE>{50,   0,    0,    0,                                 // the records
                                 2,    1,    0,    0,                                 // class
                                 8,    0,    0,    0,                                 //
                                 7,    0,    0,    0,                                 // operator
                                 8,    0,    0,    0,                                 // the path's size
                                 'C',  0,    ':',  0,    '\\', 0,    0,   0,          //
                                 0,    0,    0,    0,    8,    0,    0,   0,          //
                                 0xFF, 0xFF, 0xFF, 0xFF, 10,   0,    0,   0,          //
                                 0xE9, 0,    0x3D, 0xD8, 0x00, 0xDE, 'x', 0, 0, 0})); //
    EXPECT_EQ(NumberAt(message.GetInspectedPermissions(), 0), 0U);
}

TEST(DataAccessChannelsMessage, TakesAPathOfThreeUnitsForARecordOf24Bytes) {
    const auto message = WithPermissions(Permissions(L"True", Permission(L"abc", L"1", L"2")));
    EXPECT_EQ(NumberAt(message.GetInspectedPermissions(), 0), 24U);
}

TEST(DataAccessChannelsMessage, SortsPermissionsByExactlyOneWord) {
    const auto message = WithPermissions(Permissions(L"false", Permission(L"inspected", L"1", L"2")) +
                                         Permissions(L"False", Permission(L"not", L"3", L"4")));
    EXPECT_EQ(NumberAt(message.GetInspectedPermissions(), 4), 2U);
    EXPECT_EQ(NumberAt(message.GetUninspectedPermissions(), 4), 4U);
}

TEST(DataAccessChannelsMessage, KeepsTheLaterOfTwoBlocksOfAKind) {
    const std::wstring first = Permissions(L"False", Permission(L"C:\\first\\and\\longer", L"1", L"1"));
    const std::wstring second = Permissions(L"False", Permission(L"C:\\second", L"2", L"2"));
    const auto message = WithPermissions(first + second);
    EXPECT_EQ(NumberAt(message.GetUninspectedPermissions(), 4), 2U);
    EXPECT_EQ(Whole(message.GetUninspectedPermissions()), Whole(WithPermissions(second).GetUninspectedPermissions()));
}

TEST(DataAccessChannelsMessage, FreesABlockThatALaterOneReplaces) {
    const std::wstring list = Permissions(L"True", Permission(std::wstring(50'000, L'a'), L"1", L"1"));
    const auto read = [&] { WithPermissions(list + list + list + list); };
    read(); // from now on the heap has what it needs
    const std::size_t before = plugin_link_tests::PrivateBytes();
    for (int turn = 0; turn < 100; ++turn) {
        read();
    }
    EXPECT_LT(plugin_link_tests::PrivateBytes(), before + 10'000'000) << "three blocks a turn would be 30 MB";
}

TEST(DataAccessChannelsMessage, KeepsABlockWhenALaterOneOfItsKindHasNothing) {
    const auto message =
        WithPermissions(Permissions(L"True", Permission(L"abc", L"1", L"2")) + Permissions(L"True", L"") +
                        L"<FilePermissions inspect=\"True\"><List /></FilePermissions>");
    EXPECT_EQ(NumberAt(message.GetInspectedPermissions(), 0), 24U);
}

TEST(DataAccessChannelsMessage, LeavesRoomForAPermissionWithoutAPath) {
    const std::wstring nameless = Permission(L"", L"5", L"6");
    EXPECT_EQ(Whole(WithPermissions(Permissions(L"True", nameless)).GetInspectedPermissions()),
              (std::vector<BYTE>{18, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    const auto both = WithPermissions(Permissions(L"True", nameless + Permission(L"a", L"7", L"9")));
    EXPECT_EQ(NumberAt(both.GetInspectedPermissions(), 0), 18U + 20U);
    EXPECT_EQ(NumberAt(both.GetInspectedPermissions(), 4), 9U) << "the first record is that of the path";
}

TEST(DataAccessChannelsMessage, ReadsWhatIsNoNumberAsNull) {
    const auto message = WithPermissions(Permissions(L"True", Permission(L"abc", L"write", L"0x10")));
    EXPECT_EQ(NumberAt(message.GetInspectedPermissions(), 4), 0U);
    EXPECT_EQ(NumberAt(message.GetInspectedPermissions(), 12), 0U);
}

TEST(DataAccessChannelsMessage, SkipsPermissionsWithoutASecondChild) {
    for (const wchar_t* content : {L"", L"text", L"<List>x</List>", L"<!-- x --><List>x</List>"}) {
        const auto message =
            WithPermissions(std::wstring(L"<FilePermissions inspect=\"False\">") + content + L"</FilePermissions>" +
                            Permissions(L"False", Permission(L"abc", L"1", L"2")));
        EXPECT_EQ(NumberAt(message.GetUninspectedPermissions(), 0), 24U) << content;
    }
}

TEST(DataAccessChannelsMessage, ReadsThePermissionsOfTheSecondChildWhateverItIsCalled) {
    const auto message = WithPermissions(L"<FilePermissions inspect=\"False\"><A>" + Permission(L"no", L"1", L"1") +
                                         L"</A>text<B>" + Permission(L"abc", L"2", L"2") + L"<Other /></B><C>" +
                                         Permission(L"no", L"3", L"3") + L"</C></FilePermissions>");
    EXPECT_EQ(NumberAt(message.GetUninspectedPermissions(), 0), 24U);
    EXPECT_EQ(NumberAt(message.GetUninspectedPermissions(), 4), 2U);
}

TEST(DataAccessChannelsMessage, NamesWhatIsMissing) {
    ExpectUnreadable(L"<Other />", L"The node <> has no child element <DataAccessChannelsMessage>");
    ExpectUnreadable(Document(kInspectedLaunch),
                     L"The node <DataAccessChannelsMessage> has no child element <channels>");
    ExpectUnreadable(Document(kNoChannels),
                     L"The node <DataAccessChannelsMessage> has no child element <ApplicationLaunch>");
    ExpectUnreadable(Document(kNoChannels + L"<ApplicationLaunch />"),
                     L"The element <ApplicationLaunch> has no attribute \"inspect\"");
    const std::wstring start = kNoChannels + kInspectedLaunch;
    ExpectUnreadable(Document(start + L"<FilePermissions />"),
                     L"The element <FilePermissions> has no attribute \"inspect\"");
    const std::pair<const wchar_t*, const wchar_t*> permissions[] = {
        {L"<FilePermission operator=\"1\" class=\"1\" />", L"The element <FilePermission> has no attribute \"path\""},
        {L"<FilePermission path=\"a\" class=\"1\" />", L"The element <FilePermission> has no attribute \"operator\""},
        {L"<FilePermission path=\"a\" operator=\"1\" />", L"The element <FilePermission> has no attribute \"class\""},
        {L"<FilePermission path=\"\" operator=\"1\" />", L"The element <FilePermission> has no attribute \"class\""}};
    for (const auto& [permission, words] : permissions) {
        ExpectUnreadable(Document(start + Permissions(L"True", Permission(L"b", L"1", L"1") + permission)), words);
    }
}

TEST(DataAccessChannelsMessage, FindsItsElementBehindOthers) {
    const DataAccessChannelsMessage message(L"<?xml version=\"1.0\"?><!-- x --><Other /><DataAccessChannelsMessage>"
                                            L"<Other /><ApplicationLaunch inspect=\"False\" /><channels>"
                                            L"<channel>Http</channel></channels></DataAccessChannelsMessage>");
    EXPECT_TRUE(message.IsChannelActivated(3));
    EXPECT_TRUE(message.IsLaunchInspectionOff());
}

TEST(DataAccessChannelsMessage, GivesTheParsersWordsForTextThatIsNoXml) {
    ExpectUnreadable(L"", L"Error document empty. (line 0, column 0)");
    const auto failure = Thrown<vorlek::DataAccessChannelsMessageFormatException>(
        [] { DataAccessChannelsMessage message(L"<DataAccessChannelsMessage></b>"); });
    EXPECT_THAT(failure.GetMessage(), HasSubstr(L"Error reading end tag."));
}

TEST(DataAccessChannelsMessage, CannotBeReadWhereverItIsCutOff) {
    const std::wstring text =
        Document(L"<channels><channel>Http</channel></channels><ApplicationLaunch inspect=\"False\" />" +
                 Permissions(L"True", Permission(L"C:\\a", L"1", L"2")));
    DataAccessChannelsMessage whole(text);
    for (std::size_t length = 0; length < text.size(); ++length) {
        EXPECT_THROW(DataAccessChannelsMessage(text.substr(0, length)),
                     vorlek::DataAccessChannelsMessageFormatException)
            << length;
    }
}

TEST(DataAccessChannelsMessage, IsCopiedWithItsBlocks) {
    auto source = std::make_unique<DataAccessChannelsMessage>(
        WithPermissions(Permissions(L"True", Permission(L"abc", L"1", L"2"))));
    const DataAccessChannelsMessage copy = *source;
    EXPECT_NE(copy.GetInspectedPermissions(), source->GetInspectedPermissions());
    source.reset();
    EXPECT_EQ(NumberAt(copy.GetInspectedPermissions(), 0), 24U);
}
