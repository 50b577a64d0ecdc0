#pragma once
#include "agent/apps/outlook/CommonUtils.h"
#include "agent/apps/outlook/WorkerThread.h"
#include "foundation/AutoHandle.h"
#include "tests/outlook/EventSink.h"
#include "tests/outlook/OutlookControllerTest.h"
#include "tests/support/MessageBox.h"

namespace outlook_tests {

/// Holds the agent's answers to inspections back until it is opened.
class Hold {
public:
    /// An agent whose answers are held. asked: called first, on the connection's thread.
    stand_ins::AgentOptions Inspections(std::function<void(const stand_ins::Request&)> asked = {}) {
        stand_ins::AgentOptions options;
        options.responder = [this, asked = std::move(asked)](const stand_ins::Request& request) {
            if (request.method == L"Inspect") {
                if (asked) {
                    asked(request);
                }
                Wait();
            }
            return std::optional<stand_ins::Answer>();
        };
        return options;
    }
    void Open() { SetEvent(opened_.Get()); }
    /// Until it is opened; a test that never does it fails and goes on.
    void Wait() const { EXPECT_EQ(WaitForSingleObject(opened_.Get(), 90000), WAIT_OBJECT_0); }

private:
    vorlek::FileHandle opened_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};

/// An interactive Outlook whose controller hears the send event.
class AsyncTest : public OutlookControllerTest {
protected:
    AsyncTest() { Start({}); }
    ~AsyncTest() override { EXPECT_TRUE(WorkersEnd()); }

    /// Another Outlook in place of the first.
    void Start(stand_ins::OutlookOptions options) {
        sink.reset();
        controller.RestoreExplorerWindow_();
        vorlek::OutlookControllerPeer::ForgetWindows();
        Restart(std::move(options));
        controller.InitApplication(App());
        peer.SetEmbedded(false);
        sink = std::make_unique<EventSink>(
            outlook->Application(), [this](IDispatch* item) { return controller.InspectItemBeforeSending(item); });
        outlook->Calls().Clear();
        log.Clear();
    }

    /// The user sends a new mail. The item of the result is that of the mail whatever becomes of it.
    stand_ins::SendResult Send(const stand_ins::ItemData& data = kMail) {
        return outlook->Send(outlook->NewMail(data));
    }

    /// Runs Outlook's loop until no worker is left.
    bool WorkersEnd() {
        return outlook->RunUntil([] { return vorlek::WorkerThread::Running() == 0; }, 20000);
    }
    /// The same until a worker's message that is only posted has been handled, too.
    bool AllEnds() {
        const bool ended = WorkersEnd();
        stand_ins::Outlook::HandleMessages();
        return ended;
    }
    static std::vector<std::wstring> BoxesDuring(const std::function<void()>& body) {
        return test_support::BoxesDuring(L"Microsoft Outlook", body);
    }
    static std::vector<std::wstring> Ledger() {
        std::vector<std::wstring> ids;
        vorlek::CommonUtils::GetInspectedItemIds(ids, nullptr);
        return ids;
    }
    std::size_t Logged(const std::wstring& level, const std::wstring& text) const {
        return static_cast<std::size_t>(std::ranges::count(log.Texts(level), text));
    }

    std::unique_ptr<EventSink> sink;
};

} // namespace outlook_tests
