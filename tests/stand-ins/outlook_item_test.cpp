// What items answer: bodies, recipients, attachments, properties.
#include "stand-ins/outlook/Text.h"
#include "tests/stand-ins/OutlookTest.h"

namespace stand_ins {
namespace {

constexpr HRESULT kNotFound = static_cast<HRESULT>(0x8004010F);
constexpr const wchar_t* kProptag = L"http://schemas.microsoft.com/mapi/proptag/";

class OutlookItem : public RunningOutlookTest {
protected:
    std::wstring Property(IDispatch* object, const std::wstring& tag) {
        const _variant_t value =
            Invoke(GetObject(object, L"PropertyAccessor"), L"GetProperty", {(kProptag + tag).c_str()});
        return value.bstrVal;
    }
    static DispatchPtr ItemOf(IDispatch* object, const wchar_t* collection, long index) {
        return Get(GetObject(object, collection), L"Item", {index});
    }
};

TEST_F(OutlookItem, HtmlMailHasAPlainTextOfItsOwn) {
    const auto mail = outlook_.NewMail({.htmlBody = L"<html><body><p>Hello &amp; good bye</p>x</body></html>"});
    EXPECT_EQ(GetNumber(mail, L"BodyFormat"), 2);
    EXPECT_EQ(GetText(mail, L"Body"), L"Hello & good bye\r\nx");
}

TEST_F(OutlookItem, HtmlThatIsSetDerivesTheText) {
    const auto mail = Mail();
    Put(mail, L"HTMLBody", L"<p>One</p>");
    EXPECT_EQ(GetNumber(mail, L"BodyFormat"), 2);
    EXPECT_EQ(GetText(mail, L"Body"), L"One\r\n");
    EXPECT_EQ(GetText(mail, L"HTMLBody"), L"<p>One</p>");
}

TEST_F(OutlookItem, TextThatIsSetOnAnHtmlMailMakesItPlain) {
    const auto mail = outlook_.NewMail({.htmlBody = L"<p>One</p>"});
    Put(mail, L"Body", L"Two");
    EXPECT_EQ(GetNumber(mail, L"BodyFormat"), 1);
    EXPECT_EQ(GetText(mail, L"Body"), L"Two");
    EXPECT_EQ(GetText(mail, L"HTMLBody"), L"<html><body><p>Two</p></body></html>");
}

TEST_F(OutlookItem, RichTextMailIsOneByItsBody) {
    EXPECT_EQ(GetNumber(outlook_.NewMail({.body = L"x", .rtfBody = "{\\rtf1 x}"}), L"BodyFormat"), 3);
    EXPECT_EQ(GetNumber(outlook_.NewMail({.body = L"x", .bodyFormat = 3}), L"BodyFormat"), 3);
}

TEST_F(OutlookItem, AttachmentsAreCountedFromOneAndGrowAtTheEnd) {
    const auto mail = outlook_.NewMail({.attachments = {{.fileName = L"a.txt", .content = "AAA"}}});
    const auto attachments = GetObject(mail, L"Attachments");
    test_support::WriteBytes(folder_ / L"b.bin", std::string("B\0B", 3));
    Invoke(attachments, L"Add", {(folder_ / L"b.bin").c_str(), 1, 1, L"second.bin"});
    ASSERT_EQ(GetNumber(attachments, L"Count"), 2);
    const auto first = ItemOf(mail, L"Attachments", 1);
    const auto second = ItemOf(mail, L"Attachments", 2);
    EXPECT_EQ(GetText(first, L"FileName"), L"a.txt");
    EXPECT_EQ(GetText(first, L"DisplayName"), L"a.txt");
    EXPECT_EQ(GetText(second, L"FileName"), L"b.bin");
    EXPECT_EQ(GetText(second, L"DisplayName"), L"second.bin");
    EXPECT_EQ(GetNumber(second, L"Position"), 1);
    EXPECT_EQ(GetNumber(second, L"Size"), 0);
    Invoke(mail, L"Save");
    EXPECT_EQ(GetNumber(second, L"Size"), 3);
    Invoke(attachments, L"Remove", {1L});
    EXPECT_EQ(GetNumber(attachments, L"Count"), 1);
    EXPECT_EQ(GetText(second, L"FileName"), L"b.bin");
    EXPECT_EQ(ErrorOf([&] { Invoke(attachments, L"Remove", {2L}); }), DISP_E_BADINDEX);
    EXPECT_EQ(ErrorOf([&] { Invoke(attachments, L"Remove", {0L}); }), DISP_E_BADINDEX);
}

TEST_F(OutlookItem, AttachmentIsSavedByteForByte) {
    const std::string bytes("\0\xFF\r\n\x80", 5);
    const auto mail = outlook_.SavedItem({.attachments = {{.fileName = L"a.bin", .content = bytes}}});
    const auto same = DispatchPtr(Invoke(Session(), L"GetItemFromID", {GetText(mail, L"EntryID").c_str()}));
    Invoke(ItemOf(same, L"Attachments", 1), L"SaveAsFile", {(folder_ / L"out").c_str()});
    EXPECT_EQ(test_support::ReadBytes(folder_ / L"out"), bytes);
    EXPECT_EQ(ErrorOf([&] {
                  Invoke(ItemOf(mail, L"Attachments", 1), L"SaveAsFile", {(folder_ / L"no" / L"where").c_str()});
              }),
              HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
}

TEST_F(OutlookItem, SourceThatIsMissingIsNotAttached) {
    const auto attachments = GetObject(Mail(), L"Attachments");
    EXPECT_EQ(ErrorOf([&] { Invoke(attachments, L"Add", {(folder_ / L"missing").c_str()}); }),
              HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(GetNumber(attachments, L"Count"), 0);
}

TEST_F(OutlookItem, RecipientsTellNameAddressAndType) {
    const auto mail = outlook_.NewMail({.recipients = {kBen, {.address = L"cc@example.com", .type = 2}}});
    const auto ben = ItemOf(mail, L"Recipients", 1);
    EXPECT_EQ(GetText(ben, L"Name"), L"Ben");
    EXPECT_EQ(GetText(ben, L"Address"), L"ben@example.com");
    EXPECT_EQ(GetNumber(ben, L"Type"), 1);
    EXPECT_TRUE(GetBool(ben, L"Resolved"));
    EXPECT_EQ(GetText(GetObject(ben, L"AddressEntry"), L"Type"), L"SMTP");
    EXPECT_EQ(GetNumber(ItemOf(mail, L"Recipients", 2), L"Type"), 2);
    EXPECT_EQ(GetText(mail, L"To"), L"Ben");
    EXPECT_EQ(GetText(mail, L"CC"), L"cc@example.com");
    EXPECT_EQ(Property(ben, L"0x39FE001E"), L"ben@example.com");
}

TEST_F(OutlookItem, ResolveAllResolvesAddressesOnly) {
    const auto mail = outlook_.NewMail({});
    const auto recipients = GetObject(mail, L"Recipients");
    Invoke(recipients, L"Add", {L"anna@example.com"});
    Invoke(recipients, L"Add", {L"Somebody"});
    EXPECT_FALSE(bool(Invoke(recipients, L"ResolveAll")));
    EXPECT_TRUE(GetBool(ItemOf(mail, L"Recipients", 1), L"Resolved"));
    EXPECT_FALSE(GetBool(ItemOf(mail, L"Recipients", 2), L"Resolved"));
    EXPECT_EQ(GetObject(ItemOf(mail, L"Recipients", 2), L"AddressEntry"), nullptr);
}

TEST_F(OutlookItem, RecipientOfTheDirectoryHasAnSmtpAddressOnlyIfItWasGivenOne) {
    const auto mail =
        outlook_.NewMail({.recipients = {{.name = L"List", .address = L"/o=x/cn=list", .addressType = L"EX"},
                                         {.name = L"Eva",
                                          .address = L"/o=x/cn=eva",
                                          .addressType = L"EX",
                                          .properties = {{0x39FE001F, L"eva@example.com"}}}}});
    EXPECT_EQ(ErrorOf([&] { Property(ItemOf(mail, L"Recipients", 1), L"0x39FE001E"); }), kNotFound);
    EXPECT_EQ(Property(ItemOf(mail, L"Recipients", 2), L"0x39FE001E"), L"eva@example.com");
}

TEST_F(OutlookItem, PropertiesOfTheItemFollowFromItsFields) {
    const auto mail = outlook_.NewMail({.subject = L"RE: Plans", .fromName = L"Anna"});
    EXPECT_EQ(Property(mail, L"0x0E1D001F"), L"Plans");
    EXPECT_EQ(Property(mail, L"0x0042001F"), L"Anna");
    EXPECT_EQ(ErrorOf([&] { Property(Mail(), L"0x0042001F"); }), kNotFound);
    EXPECT_EQ(ErrorOf([&] { Property(mail, L"nonsense"); }), E_INVALIDARG);
    EXPECT_EQ(ErrorOf([&] {
                  Invoke(GetObject(mail, L"PropertyAccessor"), L"GetProperty",
                         {L"HTTP://schemas.microsoft.com/mapi/proptag/0x0E1D001F"});
              }),
              E_INVALIDARG);
}

TEST_F(OutlookItem, AccountIsThereOnlyIfTheItemHasOne) {
    EXPECT_EQ(GetObject(Mail(), L"SendUsingAccount"), nullptr);
    const auto mail = outlook_.NewMail({.account = L"anna@example.com"});
    EXPECT_EQ(GetText(GetObject(mail, L"SendUsingAccount"), L"SmtpAddress"), L"anna@example.com");
    const auto nameless = outlook_.NewMail({.hasAccount = true});
    EXPECT_EQ(GetText(GetObject(nameless, L"SendUsingAccount"), L"SmtpAddress"), L"");
}

TEST_F(OutlookItem, AllFieldsSurviveTheStore) {
    const ItemData data{.subject = L"Привет \xD83C\xDF3B",
                        .body = L"text",
                        .htmlBody = L"<p>text</p>",
                        .fromName = L"Anna",
                        .account = L"anna@example.com",
                        .recipients = {{.name = L"Ben", .address = L"b@example.com", .type = 3, .group = L"Crew"}},
                        .attachments = {{.fileName = L"a", .content = "x", .contentId = L"cid"}},
                        .autoForwarded = true,
                        .votingResponse = L"Yes",
                        .properties = {{0x12345678, L"value"}},
                        .headers = {{L"X-Mark", L"7"}}};
    outlook_.SavedItem(data);
    const ItemData saved = outlook_.ItemsIn(L"Drafts").at(0);
    EXPECT_EQ(saved.subject, data.subject);
    EXPECT_EQ(saved.htmlBody, data.htmlBody);
    EXPECT_EQ(saved.fromName, L"Anna");
    EXPECT_EQ(saved.account, L"anna@example.com");
    EXPECT_EQ(saved.recipients.at(0).type, 3);
    EXPECT_EQ(saved.recipients.at(0).group, L"Crew");
    EXPECT_EQ(saved.attachments.at(0).contentId, L"cid");
    EXPECT_TRUE(saved.autoForwarded);
    EXPECT_EQ(saved.votingResponse, L"Yes");
    EXPECT_EQ(saved.properties, data.properties);
    EXPECT_EQ(saved.headers, data.headers);
}

TEST(OutlookText, PlainTextIsWhatAReaderSees) {
    EXPECT_EQ(PlainTextOf(L"<style>p { x }</style>a  b<br>c<!-- <p>d --><script>e</script>&#x1F33B;&lt;&nosuch;"),
              L"a b\r\nc\xD83C\xDF3B<&nosuch;");
    EXPECT_EQ(PlainTextOf(L"a <b"), L"a ");
}

TEST(OutlookText, Base64IsStrict) {
    EXPECT_EQ(Base64Decode(Base64Encode("ab")), "ab");
    EXPECT_EQ(Base64Encode("abc"), "YWJj");
    EXPECT_THROW(Base64Decode("YWJ"), std::runtime_error);
    EXPECT_THROW(Base64Decode("YW*j"), std::runtime_error);
    EXPECT_THROW(Base64Decode("=WJj"), std::runtime_error);
}

TEST(OutlookText, NormalizedSubjectLosesOneShortMark) {
    EXPECT_EQ(NormalizedSubject(L"RE: FW: x"), L"FW: x");
    EXPECT_EQ(NormalizedSubject(L"Note: x"), L"Note: x");
    EXPECT_EQ(NormalizedSubject(L": x"), L": x");
    EXPECT_EQ(NormalizedSubject(L"1: x"), L"1: x");
}

} // namespace
} // namespace stand_ins
