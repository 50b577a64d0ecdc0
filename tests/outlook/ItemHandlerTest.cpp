#include "agent/apps/outlook/ItemHandler.h"

#include <functional>
#include <stdexcept>
#include <utility>

#include "foundation/Exception.h"
#include "foundation/RegistryKey.h"
#include "tests/outlook/OutlookTest.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/ReplacedImport.h"

namespace vorlek {
namespace {

using outlook_tests::ContextOf;
using outlook_tests::ErrorText;
using outlook_tests::kAccessDenied;
using outlook_tests::OutlookTest;
using outlook_tests::ThrowException;
using outlook_tests::ThrowNumber;
using outlook_tests::ThrowStandard;
using stand_ins::ItemData;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

const ItemData kMail{.subject = L"RE: Plans",
                     .body = L"The plans of the year.",
                     .account = L"me@a.example",
                     .recipients = {{.name = L"You", .address = L"you@b.example"}},
                     .attachments = {{.fileName = L"plan.txt", .content = "secret"}},
                     .properties = {{0x0E1D001F, L"Plans"}}};

class ItemHandlerTest : public OutlookTest {
protected:
    std::wstring Path(const std::wstring& name) const { return (folder / name).wstring(); }
};

/// How the body opens a file: access, sharing, disposition and attributes.
std::vector<DWORD> OpeningDuring(const std::function<void()>& body) {
    std::vector<DWORD> opening;
    test_support::ReplacedImport<"CreateFileW", decltype(CreateFileW)> create(
        [&](const wchar_t* path, DWORD access, DWORD sharing, SECURITY_ATTRIBUTES* security, DWORD disposition,
            DWORD attributes, HANDLE like) {
            opening = {access, sharing, disposition, attributes};
            return create.Original(path, access, sharing, security, disposition, attributes, like);
        });
    body();
    return opening;
}

TEST_F(ItemHandlerTest, LinesBearTheNameOfTheClass) {
    HandlerOf(kMail)->HandleOnSpot();
    EXPECT_TRUE(log.Lines().front().logger.ends_with(L"vorlek.ItemHandler"));
}

TEST_F(ItemHandlerTest, AMessageHoldsSubjectSenderRecipientsAttachmentsBodyAndVersionInThisOrder) {
    const auto handler = HandlerOf(kMail);
    CInspectorMessage message(L"Email");
    handler->FillInspectorMessage(message);
    const auto context = ContextOf(message);
    ASSERT_THAT(context, SizeIs(7));
    EXPECT_EQ(context[0], L"EmailSubject=RE: Plans");
    EXPECT_EQ(context[1], L"EmailNormalizedSubject=Plans");
    EXPECT_EQ(context[2], L"EmailFrom=me@a.example");
    EXPECT_EQ(context[3], L"EmailTo=you@b.example");
    EXPECT_EQ(context[4], L"IncidentDestination=you@b.example");
    EXPECT_THAT(context[5], StartsWith(L"EmailBody="));
    EXPECT_EQ(context[6], L"Application=16");
    const std::wstring text = message.GetFormattedMessage();
    const auto subject = text.find(L"<dataItem><contextItem name=\"ItemType\" value=\"EmailSubject\" />"
                                   L"<textFormat>clearText</textFormat><dataEncoding>text</dataEncoding>"
                                   L"<data>RE: Plans</data></dataItem>");
    const auto attachment = text.find(L"<dataItem><contextItem name=\"DataLocation\" value=\"plan.txt\" />");
    const auto body = text.find(L"<dataItem><contextItem name=\"ItemType\" value=\"EmailBody\" />"
                                L"<textFormat>clearText</textFormat><dataEncoding>text</dataEncoding>"
                                L"<data>The plans of the year.</data></dataItem>");
    EXPECT_LT(subject, attachment);
    EXPECT_LT(attachment, body);
    EXPECT_NE(body, std::wstring::npos);
    EXPECT_TRUE(log.Has(L"DEBUG", L"Item sender is: me@a.example"));
    EXPECT_TRUE(log.Has(L"DEBUG", L"Outlook version retrieved: 16"));
    EXPECT_TRUE(log.Has(L"INFO", L"Exporting item body to a temporary file"));
    EXPECT_TRUE(log.Has(L"INFO", L"Exported item body, plain text size: 22, filename: " + context[5].substr(10)));
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(ItemHandlerTest, TheContextNamesTheBodysFile) {
    CInspectorMessage message(L"Email");
    HandlerOf({.body = L"ab"})->FillInspectorMessage(message);
    const auto context = ContextOf(message);
    ASSERT_THAT(context, SizeIs(5));
    EXPECT_EQ(test_support::ReadBytes(context[3].substr(10)), std::string("\xFF\xFE"
                                                                          "a\0b\0",
                                                                          6));
}

TEST_F(ItemHandlerTest, AMissingSenderStandsWithAnEmptyValue) {
    CInspectorMessage message(L"Email");
    HandlerOf({.body = L"text"})->FillInspectorMessage(message);
    EXPECT_THAT(ContextOf(message), Contains(L"EmailFrom="));
}

TEST_F(ItemHandlerTest, AnUnknownVersionTakesTheRoadOfACurrentOutlook) {
    SetVersion(L"-1.");
    CInspectorMessage message(L"Email");
    HandlerOf(kMail)->FillInspectorMessage(message);
    EXPECT_THAT(ContextOf(message), Contains(L"Application=-1"));
    EXPECT_THAT(ContextOf(message), Contains(L"EmailTo=you@b.example"));
}

TEST_F(ItemHandlerTest, EveryFailureOfTheSubjectIsReportedAndTheOtherStepsRun) {
    const auto handler = HandlerOf(kMail);
    const auto fill = [&] {
        CInspectorMessage message(L"Email");
        handler->FillInspectorMessage(message);
        return ContextOf(message);
    };
    outlook->Failures().Fail(L"MailItem.Subject", kAccessDenied, 1);
    EXPECT_THAT(fill(), SizeIs(5));
    outlook->Failures().On(L"MailItem.Subject", ThrowStandard("lost"), 1);
    EXPECT_THAT(fill(), SizeIs(5));
    outlook->Failures().On(L"MailItem.Subject", ThrowNumber(), 1);
    EXPECT_THAT(fill(), SizeIs(5));
    outlook->Failures().On(L"MailItem.Subject", ThrowException(), 1);
    EXPECT_THAT(fill(), SizeIs(5));
    EXPECT_THAT(Errors(), ElementsAre(L"Caught a com exception while resolving item subject (skipping): " +
                                          ErrorText(kAccessDenied),
                                      L"Caught an exception while resolving item subject (skipping): lost",
                                      L"Caught an exception while resolving item subject - Unknown error (skipping).",
                                      L"Caught an exception while resolving item subject - Unknown error (skipping)."));
}

/// A mail that cannot be asked for its object the first time.
class SenderlessHandler : public MessageHandler {
public:
    SenderlessHandler(Outlook::_MailItemPtr item, std::function<void()> fail)
        : MessageHandler(item), fail_(std::move(fail)) {}

    IDispatchPtr GetItemDispatch() override {
        if (const auto fail = std::exchange(fail_, nullptr)) {
            fail();
        }
        return MessageHandler::GetItemDispatch();
    }

private:
    std::function<void()> fail_;
};

TEST_F(ItemHandlerTest, EveryFailureOfTheSenderIsReportedAndTheOtherStepsRun) {
    const auto fill = [&](const std::function<void()>& fail) {
        SenderlessHandler handler(Outlook::_MailItemPtr(outlook->NewMail(kMail).GetInterfacePtr()), fail);
        CInspectorMessage message(L"Email");
        handler.FillInspectorMessage(message);
        EXPECT_THAT(ContextOf(message), SizeIs(6));
    };
    fill([] { _com_issue_error(kAccessDenied); });
    fill([] { throw std::runtime_error("lost"); });
    fill([] { throw 42; });
    EXPECT_THAT(Errors(), ElementsAre(L"Caught a com exception while resolving item sender (skipping): " +
                                          ErrorText(kAccessDenied),
                                      L"Caught an exception while resolving item sender (skipping): lost",
                                      L"Caught an exception while resolving item sender - Unknown error (skipping)."));
}

TEST_F(ItemHandlerTest, AFailureOfTheBodyEndsTheMessage) {
    const auto handler = HandlerOf(kMail);
    outlook->Failures().Fail(L"MailItem.BodyFormat", kAccessDenied);
    CInspectorMessage message(L"Email");
    EXPECT_THROW(handler->FillInspectorMessage(message), _com_error);
    EXPECT_THAT(ContextOf(message), SizeIs(5)); // no body, no version
}

TEST_F(ItemHandlerTest, ForTheLogAnItemIsItsIdAndSubject) {
    const auto handler = HandlerOf(kMail);
    const std::wstring id = handler->GetItemUniqueID();
    EXPECT_EQ(handler->ToString(), L"\n ID=" + id + L"\n Subject=RE: Plans");
}

TEST_F(ItemHandlerTest, TheOverrideMakesEveryItemOnTheSpotBeforeAnyOtherTest) {
    const auto handler = HandlerOf(kMail);
    EXPECT_FALSE(handler->ItemHandler::HandleOnSpot());
    EXPECT_FALSE(log.Has(L"INFO", L"OnSpot override enabled."));
    const ULONGLONG on = 1;
    const auto* bytes = reinterpret_cast<const BYTE*>(&on);
    RegistryKey::GetCurrentUser()
        .CreateSubKey(outlook_tests::kInputKey, true)
        ->SetValue(L"onspotenabled", std::vector<BYTE>(bytes, bytes + sizeof(on)), REG_QWORD);
    outlook->Calls().Clear();
    EXPECT_TRUE(handler->HandleOnSpot());
    EXPECT_TRUE(log.Has(L"INFO", L"OnSpot override enabled."));
    EXPECT_THAT(outlook->Calls().Members(), IsEmpty());
}

TEST_F(ItemHandlerTest, TextIsWrittenAsItStandsWithTheMarkInFrontIfWanted) {
    ItemHandler::WriteBSTRToFile(L"a\x20AC", Path(L"marked.txt"), true);
    ItemHandler::WriteBSTRToFile(L"a\x20AC", Path(L"plain.html"), false);
    EXPECT_EQ(test_support::ReadBytes(folder / L"marked.txt"), std::string("\xFF\xFE"
                                                                           "a\0\xAC\x20",
                                                                           6));
    EXPECT_EQ(test_support::ReadBytes(folder / L"plain.html"), std::string("a\0\xAC\x20", 4));
}

TEST_F(ItemHandlerTest, OthersMayReadAFileThatIsWrittenOrRead) {
    EXPECT_THAT(OpeningDuring([&] { ItemHandler::WriteBSTRToFile(L"a", Path(L"a.txt"), false); }),
                ElementsAre(0x40000000u, 1u, 2u, 128u));
    _bstr_t text;
    EXPECT_THAT(OpeningDuring([&] { ItemHandler::ReadFileToBSTR(Path(L"a.txt"), text); }),
                ElementsAre(0x80000000u, 1u, 3u, 128u));
}

TEST_F(ItemHandlerTest, TheStepsOfWritingAreLogged) {
    HandlerOf({});
    const std::wstring path = Path(L"marked.txt");
    const std::wstring directory = folder.Path().wstring();
    ItemHandler::WriteBSTRToFile(L"ab", path, true);
    EXPECT_THAT(log.Texts(L"DEBUG"),
                ElementsAre(L"Writing BSTR of size 4 to realpath " + directory + L" and full path=" + path,
                            L"WriteBSTRToFile: realpath=" + directory + L" exits.  Not creating"));
}

TEST_F(ItemHandlerTest, AnEmptyTextWritesTheMarkOrNothing) {
    HandlerOf({});
    ItemHandler::WriteBSTRToFile(L"", Path(L"marked.txt"), true);
    ItemHandler::WriteBSTRToFile(_bstr_t(), Path(L"plain.html"), false);
    EXPECT_EQ(test_support::ReadBytes(folder / L"marked.txt"), "\xFF\xFE");
    EXPECT_EQ(std::filesystem::file_size(folder / L"plain.html"), 0u);
    EXPECT_THAT(log.Texts(L"DEBUG"), Contains(L"Buffer.Size is 0, not writing.\n").Times(2));
}

TEST_F(ItemHandlerTest, AMissingFolderIsMade) {
    HandlerOf({});
    const std::wstring directory = Path(L"new");
    const std::wstring path = directory + L"\\a.txt";
    ItemHandler::WriteBSTRToFile(L"a", path, false);
    EXPECT_EQ(std::filesystem::file_size(path), 2u);
    EXPECT_TRUE(log.Has(L"DEBUG", L"WriteBSTRToFile:full name=" + path + L", realpath=" + directory +
                                      L" does not exist. creating directory"));
}

TEST_F(ItemHandlerTest, AnEarlierFileIsReplaced) {
    ItemHandler::WriteBSTRToFile(L"a long text", Path(L"a.txt"), true);
    ItemHandler::WriteBSTRToFile(L"a", Path(L"a.txt"), false);
    EXPECT_EQ(std::filesystem::file_size(folder / L"a.txt"), 2u);
}

TEST_F(ItemHandlerTest, AFileThatCannotBeWrittenRaises) {
    std::filesystem::create_directory(folder / L"a.txt"); // a folder of that name
    EXPECT_THROW(ItemHandler::WriteBSTRToFile(L"a", Path(L"a.txt"), false), Exception);
}

TEST_F(ItemHandlerTest, TextIsReadAsItStandsWithoutTheMark) {
    HandlerOf({});
    _bstr_t text;
    test_support::WriteBytes(folder / L"marked.txt", std::string("\xFF\xFE"
                                                                 "a\0\xAC\x20",
                                                                 6));
    ItemHandler::ReadFileToBSTR(Path(L"marked.txt"), text);
    EXPECT_EQ(platform::ToWide(text), L"a\x20AC");
    EXPECT_TRUE(log.Has(L"DEBUG", L"Reading BSTR of size 6 from " + Path(L"marked.txt")));
    test_support::WriteBytes(folder / L"plain.html", std::string("a\0\0\0b\0", 6));
    ItemHandler::ReadFileToBSTR(Path(L"plain.html"), text);
    EXPECT_EQ(platform::ToWide(text), std::wstring(L"a\0b", 3));
}

TEST_F(ItemHandlerTest, AFileOfOneByteIsThatByte) {
    test_support::WriteBytes(folder / L"one", "\xFF");
    _bstr_t text;
    ItemHandler::ReadFileToBSTR(Path(L"one"), text);
    ASSERT_EQ(SysStringByteLen(text.GetBSTR()), 1u);
    EXPECT_EQ(*reinterpret_cast<const char*>(text.GetBSTR()), '\xFF');
}

TEST_F(ItemHandlerTest, AnEmptyFileIsAnEmptyText) {
    test_support::WriteBytes(folder / L"none", "");
    test_support::WriteBytes(folder / L"mark", "\xFF\xFE");
    _bstr_t text = L"before";
    ItemHandler::ReadFileToBSTR(Path(L"none"), text);
    EXPECT_EQ(SysStringByteLen(text.GetBSTR()), 0u);
    text = L"before";
    ItemHandler::ReadFileToBSTR(Path(L"mark"), text);
    EXPECT_EQ(SysStringByteLen(text.GetBSTR()), 0u);
}

TEST_F(ItemHandlerTest, ATextThatIsReadIsAllocatedOnce) {
    test_support::WriteBytes(folder / L"plain.html", std::string("a\0", 2));
    _bstr_t text;
    test_support::ReplacedImport<"SysAllocStringByteLen", decltype(SysAllocStringByteLen)> allocate(
        [&](const char* bytes, UINT size) { return allocate.Original(bytes, size); });
    ItemHandler::ReadFileToBSTR(Path(L"plain.html"), text);
    EXPECT_EQ(allocate.Calls(), 1u);
}

TEST_F(ItemHandlerTest, AFileThatIsNotThereRaises) {
    _bstr_t text;
    EXPECT_THROW(ItemHandler::ReadFileToBSTR(Path(L"nowhere"), text), FileNotFoundException);
}

} // namespace
} // namespace vorlek
