// Many mails in flight at once.
#include <map>

#include "stand-ins/outlook/Figures.h"
#include "tests/outlook/AsyncTest.h"

namespace vorlek {
namespace {

using outlook_tests::AsyncTest;
using outlook_tests::Hold;
using outlook_tests::kMail;
using stand_ins::Figures;
using stand_ins::SendResult;
using testing::IsEmpty;

constexpr int kMails = 200;
constexpr int kMore = 50; // when every part has what it keeps for so many threads

class LoadTest : public AsyncTest {
protected:
    /// Sends so many mails before the agent answers the first of them, and waits until all have left.
    void SendAtOnce(int count) {
        Hold hold;
        const stand_ins::Agent agent(hold.Inspections());
        for (int i = 0; i < count; ++i) {
            auto mail = kMail;
            mail.subject = L"Mail " + std::to_wstring(i);
            EXPECT_EQ(Send(mail).outcome, SendResult::Outcome::Stopped);
        }
        EXPECT_EQ(WorkerThread::Running(), count);
        EXPECT_EQ(Ledger().size(), static_cast<std::size_t>(count));
        hold.Open();
        ASSERT_TRUE(outlook->RunUntil([] { return WorkerThread::Running() == 0; }, 90000));
    }
    /// What the process holds once its threads have gone home.
    Figures Measure() {
        log.Clear();
        outlook->RunUntil([&] { return stand_ins::CountThreads() <= threads; });
        return Figures::Measure();
    }

    const std::size_t threads = stand_ins::CountThreads();
};

TEST_F(LoadTest, ManyMailsAtOnceLeaveEachOnceAndNothingStaysBehind) {
    outlook->Calls().Enable(false);
    SendAtOnce(kMails);
    const Figures before = Measure();
    SendAtOnce(kMore);
    const Figures after = Measure();
    std::printf("after %d mails: %ls\nafter %d more: %ls\n", kMails, before.ToString().c_str(), kMore,
                after.ToString().c_str());
    std::map<std::wstring, int> subjects;
    for (const auto& mail : outlook->Delivered()) {
        ++subjects[mail.subject];
    }
    for (int i = 0; i < kMails; ++i) {
        EXPECT_EQ(subjects[L"Mail " + std::to_wstring(i)], i < kMore ? 2 : 1) << i;
    }
    EXPECT_THAT(outlook->ItemsIn(L"Drafts"), IsEmpty());
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_EQ(outlook->OpenInspectors(), 0u);
    EXPECT_EQ(after.objects, before.objects);
    EXPECT_EQ(after.threads, before.threads);
    EXPECT_LT(after.handles, before.handles + kMore / 5);
    EXPECT_LT(after.heapBlocks, before.heapBlocks + kMore / 5) << "a mail leaves something behind";
}

} // namespace
} // namespace vorlek
