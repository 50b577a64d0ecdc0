// What becomes of a mail whose agent does not do as it should: each misbehaviour that makes a difference, on a whole
// road.
#include <algorithm>
#include <cctype>
#include <regex>

#include <gmock/gmock.h>

#include "tests/end-to-end/Desk.h"

namespace end_to_end {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

constexpr const char* kPassedUninspected = "ERROR InspectItemBeforeSending:exception occured ";

/// Blocks what is secret; marks all else, in the subject and in a file for the body.
const Json kPolicy = {
    {"rules",
     {{{"name", "secret"}, {"match", {{"subject", "secret"}}}, {"then", {{"block", true}}}},
      {{"name", "rest"}, {"then", {{"subject", "[Internal] {subject}"}, {"body", {{"before", "Internal"}}}}}}}}};

/// A misbehaviour, and the beginning of a line that the log must have for it.
struct Row {
    const char* misbehaviour;
    const char* words;
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.misbehaviour;
}

class MisbehavingAgent : public Desk {
protected:
    void SetUp() override {
        secret_ = Item({{"subject", "secret plans"}});
        plain_ = Item({{"subject", "plans"}});
    }

    void StartMisbehaving(const std::string& misbehaviour) {
        StartAgent(kPolicy, {L"--misbehave", std::filesystem::path(misbehaviour).wstring()});
    }

    /// One Outlook sends a mail for each row, with the misbehaviour for a subject; every one has the same verdict, and
    /// the agent lets each inspection down in its own way.
    OutlookRun SendEach(const std::vector<Row>& rows, const Json& verdict) {
        Json rules = Json::array();
        std::vector<std::filesystem::path> items;
        for (const Row& row : rows) {
            Json actions = verdict;
            actions["misbehave"] = row.misbehaviour;
            rules.push_back({{"name", row.misbehaviour},
                             {"match", {{"subject", {{"pattern", "^" + Quoted_(row.misbehaviour) + "$"}}}}},
                             {"then", actions}});
            items.push_back(Item({{"subject", row.misbehaviour}}));
        }
        StartAgent({{"rules", rules}});
        return Send(items);
    }

    /// What the log says from one mail to the next.
    /// The log without the numbers of source lines, which move with every change of the file.
    std::vector<std::string> LogWithoutLines() const {
        static const std::regex number("[.]cpp\\([0-9]+\\)");
        std::vector<std::string> lines = Log();
        for (std::string& line : lines) {
            line = std::regex_replace(line, number, ".cpp");
        }
        return lines;
    }

    std::vector<std::vector<std::string>> LogOfEach() const {
        std::vector<std::vector<std::string>> mails;
        for (std::string& line : LogWithoutLines()) {
            if (line.starts_with("INFO OnMailSend:")) {
                mails.emplace_back();
            }
            if (!mails.empty()) {
                mails.back().push_back(std::move(line));
            }
        }
        return mails;
    }

    std::vector<std::string> Subjects() const {
        std::vector<std::string> subjects;
        for (const Json& mail : Delivered()) {
            subjects.push_back(mail["subject"]);
        }
        return subjects;
    }

    /// Files of decisions that neither the agent nor the add-in has removed, once both have ended.
    std::size_t FilesLeft() {
        StopAgent();
        const auto folder = folder_ / "agent";
        return std::filesystem::exists(folder)
                   ? static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}))
                   : 0;
    }

    void ExpectOutlookEndedWell() {
        EXPECT_EQ(Log().back(), "DEBUG CConnection manager instance destructed") << "Outlook did not end well";
    }

    std::filesystem::path secret_;
    std::filesystem::path plain_;

private:
    static std::string Quoted_(const std::string& text) {
        std::string quoted;
        for (const char character : text) {
            quoted += std::isalnum(static_cast<unsigned char>(character)) ? std::string(1, character)
                                                                          : std::string("\\") + character;
        }
        return quoted;
    }
};

class FirstQuestionFails : public MisbehavingAgent, public testing::WithParamInterface<Row> {};

TEST_P(FirstQuestionFails, AndTheMailStaysWithAWordToTheUser) {
    StartMisbehaving(GetParam().misbehaviour);
    const OutlookRun run = Send({plain_});
    EXPECT_EQ(run.boxes, 1);
    ASSERT_TRUE(run.box);
    EXPECT_EQ(run.box->text, L"One message or more could not be sent.\nPlease check your Drafts folder");
    EXPECT_THAT(Delivered(), IsEmpty());
    EXPECT_THAT(ItemsIn("Drafts"), SizeIs(1));
    EXPECT_THAT(Documents(), IsEmpty());
    EXPECT_THAT(LogWithoutLines(), Contains(StartsWith(GetParam().words)));
    ExpectOutlookEndedWell();
}

constexpr const char* kModeFailed = "ERROR Failed to call GetExecutionMode.";
constexpr const char* kNoMessage =
    "ERROR FromString failed with: Message.cpp: vorlek::Message::FromString: Exception: Invalid message ";
constexpr const char* kNoXml = "ERROR FromString failed with: XMLReader.cpp";

INSTANTIATE_TEST_SUITE_P(
    Agent, FirstQuestionFails,
    testing::Values(Row{"refuse", kModeFailed}, Row{"unread+close", kModeFailed}, Row{"unread=100+reset", kModeFailed},
                    Row{"unread=10", "ERROR Failed to call GetExecutionMode: The request was not read."},
                    Row{"error:GetExecutionMode:no room", "ERROR Failed to call GetExecutionMode: no room"},
                    Row{"no-result:GetExecutionMode", kModeFailed}, Row{"wrong-type:GetExecutionMode", kModeFailed},
                    Row{"wrong-tag:GetExecutionMode", kModeFailed}, Row{"wrong-version:GetExecutionMode", kNoMessage},
                    Row{"garbage:GetExecutionMode", kNoMessage}, Row{"entity-bomb:GetExecutionMode", kNoXml},
                    Row{"close=-1:GetExecutionMode", kModeFailed}, Row{"reset=50%:GetExecutionMode", kModeFailed},
                    Row{"delay=200ms+die:GetExecutionMode", kModeFailed}));

constexpr const char* kInspectFailed = "ERROR Failed to call Inspect.";

TEST_F(MisbehavingAgent, AFailedInspectionLetsTheMailPassAsItWas) {
    const std::vector<Row> rows = {
        {"error: no room", "ERROR Failed to call Inspect: no room"},
        {"no-result", kInspectFailed},
        {"no-words", kInspectFailed},
        {"wrong-type", kInspectFailed},
        {"wrong-type=Request", kInspectFailed},
        {"wrong-type=Wish", "ERROR FromString failed with: Message.cpp: vorlek::Message::StringToMessageType: "
                            "Exception: Invalid message type: \"Wish\""},
        {"wrong-tag", kInspectFailed},
        {"wrong-tag=byte[]", kInspectFailed},
        {"wrong-version", kNoMessage},
        {"not-base64", kInspectFailed},
        {"type-definition", kNoXml},
        {"entity-bomb", kNoXml},
        {"garbage", kNoMessage},
        {"garbage-before", kNoMessage},
        {"garbage-inside", kNoXml},
        {"garbage-after", kNoXml},
        {"garbage-behind", kInspectFailed},
        {"second-garbage", kNoMessage},
        {"empty", kInspectFailed},
        {"no-delimiter", kInspectFailed},
        {"extra-byte", kInspectFailed},
        {"extra-byte=0", kInspectFailed},
        {"extra-byte=-3", kInspectFailed},
        {"utf-8", kInspectFailed},
        {"close", kInspectFailed},
        {"close=1", kInspectFailed},
        {"close=-1", kInspectFailed},
        {"reset", kInspectFailed},
        {"reset=50%", kInspectFailed},
        {"wrong-tag+byte-by-byte+close=-1", kInspectFailed},
    };
    const OutlookRun run = SendEach(rows, {{"subject", "[Internal] {subject}"}, {"body", {{"before", "Internal"}}}});
    EXPECT_EQ(run.boxes, 0);
    EXPECT_THAT(ItemsIn("Drafts"), IsEmpty());
    const auto subjects = Subjects();
    const auto logs = LogOfEach();
    ASSERT_EQ(subjects.size(), rows.size());
    ASSERT_EQ(logs.size(), rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        SCOPED_TRACE(rows[i].misbehaviour);
        EXPECT_EQ(subjects[i], rows[i].misbehaviour);
        EXPECT_THAT(logs[i], Contains(StartsWith(rows[i].words)));
        EXPECT_THAT(logs[i], Contains(kPassedUninspected));
        EXPECT_THAT(logs[i], Not(Contains(HasSubstr("Got decision"))));
    }
    EXPECT_THAT(Documents(), SizeIs(rows.size()));
    ExpectOutlookEndedWell();
    EXPECT_EQ(FilesLeft(), 0u);
}

const std::vector<Row> kUnderstood = {
    {"wrong-size", "INFO Got decision: "},
    {"wrong-size=many", "INFO Got decision: "},
    {"huge=8MB+pieces", "INFO Got decision: "},
    {"keys=1000", "INFO Got decision: "},
    {"two-messages", "WARN Received more than a single message! Only single message is currently supported!"},
    {"two-messages+split=50%", "INFO Got decision: "},
    {"two-delimiters", "INFO Got decision: "},
    {"byte-by-byte", "INFO Got decision: "},
    {"odd-split", "INFO Got decision: "},
    {"split=-1", "INFO Got decision: "},
    {"split=-17", "INFO Got decision: "},
    {"split=-9", "INFO Got decision: "},
    {"pieces=7+gap=1ms", "INFO Got decision: "},
    {"delay=200ms", "INFO Got decision: "},
    {"silent=100%", "INFO Got decision: "},
};

TEST_F(MisbehavingAgent, AVerdictThatIsUnderstoodBlocks) {
    const OutlookRun run = SendEach(kUnderstood, {{"block", true}});
    EXPECT_EQ(run.boxes, 0);
    EXPECT_THAT(Delivered(), IsEmpty());
    EXPECT_THAT(ItemsIn("Drafts"), SizeIs(kUnderstood.size()));
    const auto logs = LogOfEach();
    ASSERT_EQ(logs.size(), kUnderstood.size());
    for (std::size_t i = 0; i < logs.size(); ++i) {
        SCOPED_TRACE(kUnderstood[i].misbehaviour);
        EXPECT_THAT(logs[i], Contains(StartsWith(kUnderstood[i].words)));
        EXPECT_THAT(logs[i], Contains("INFO Got decision: 2"));
    }
    ExpectOutlookEndedWell();
}

TEST_F(MisbehavingAgent, ALabelThatIsUnderstoodIsApplied) {
    const OutlookRun run =
        SendEach(kUnderstood, {{"subject", "[Internal] {subject}"}, {"body", {{"before", "Internal"}}}});
    EXPECT_EQ(run.boxes, 0);
    EXPECT_THAT(ItemsIn("Drafts"), IsEmpty());
    const auto mails = Delivered();
    ASSERT_EQ(mails.size(), kUnderstood.size());
    for (std::size_t i = 0; i < mails.size(); ++i) {
        EXPECT_EQ(mails[i]["subject"], std::string("[Internal] ") + kUnderstood[i].misbehaviour);
        EXPECT_THAT(mails[i]["body"].get<std::string>(), StartsWith("Internal"));
    }
    ExpectOutlookEndedWell();
    EXPECT_EQ(FilesLeft(), 0u);
}

TEST_F(MisbehavingAgent, ADecisionThatCannotBeReadBlocks) {
    StartMisbehaving("not-a-number:Inspect");
    const OutlookRun run = Send({plain_});
    EXPECT_EQ(run.boxes, 0);
    EXPECT_THAT(Delivered(), IsEmpty());
    EXPECT_THAT(ItemsIn("Drafts"), SizeIs(1));
    EXPECT_THAT(Log(), Contains(StartsWith("ERROR Error parsing inspection message result: ")));
    EXPECT_THAT(Log(), Contains("INFO Got decision: 2"));
}

TEST_F(MisbehavingAgent, AnAgentThatIsSilentUntilItDiesLetsTheMailPass) {
    StartMisbehaving("delay=300ms+die:Inspect");
    const OutlookRun run = Send({plain_});
    EXPECT_EQ(run.boxes, 0);
    EXPECT_THAT(Subjects(), testing::ElementsAre("plans"));
    EXPECT_TRUE(Logged(kInspectFailed));
    EXPECT_TRUE(Logged(kPassedUninspected));
    EXPECT_EQ(FilesLeft(), 0u);
}

TEST_F(MisbehavingAgent, AnAgentThatDiesBetweenTwoMailsKeepsTheSecond) {
    StartMisbehaving("die:Inspect");
    const OutlookRun run = Send({secret_, plain_});
    EXPECT_EQ(run.boxes, 1);
    EXPECT_THAT(Subjects(), testing::ElementsAre("secret plans"));
    EXPECT_THAT(ItemsIn("Drafts"), SizeIs(1));
    EXPECT_TRUE(Logged(kModeFailed));
}

TEST_F(MisbehavingAgent, OneFailedInspectionDoesNotHarmTheNext) {
    StartAgent(kPolicy);
    const OutlookRun run = Send({Item({{"subject", "one [[misbehave: reset=20]]"}}), secret_,
                                 Item({{"subject", "two"}, {"body", "[[block]] [[misbehave: garbage]]"}}), plain_});
    EXPECT_EQ(run.boxes, 0);
    EXPECT_THAT(Subjects(), testing::ElementsAre("one [[misbehave: reset=20]]", "two", "[Internal] plans"));
    EXPECT_THAT(ItemsIn("Drafts"), SizeIs(1));
    EXPECT_EQ(std::ranges::count(Log(), kPassedUninspected), 2);
}

TEST_F(MisbehavingAgent, ADelimiterInAMailNeitherEndsItsRequestNorItsAnswer) {
    const std::string subject = "a###@@@###@@@###b";
    StartAgent({{"rules",
                 {{{"name", "delimiter"}, {"match", {{"body", "secret ###@@@### plans"}}}, {"then", {{"block", true}}}},
                  {{"name", "rest"}, {"then", {{"subject", "{subject} [Internal]"}}}}}}});
    const OutlookRun run =
        Send({Item({{"subject", subject}}), Item({{"subject", subject}, {"body", "secret ###@@@### plans"}})});
    EXPECT_EQ(run.boxes, 0);
    EXPECT_THAT(Subjects(), testing::ElementsAre(subject + " [Internal]"));
    EXPECT_THAT(ItemsIn("Drafts"), SizeIs(1));
    EXPECT_THAT(Log(), Not(Contains(StartsWith("ERROR"))));
}

} // namespace
} // namespace end_to_end
