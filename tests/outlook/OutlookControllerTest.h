#pragma once
#include "stand-ins/agent/Agent.h"
#include "tests/outlook/OutlookControllerPeer.h"
#include "tests/outlook/OutlookTest.h"

namespace outlook_tests {

inline const stand_ins::ItemData kMail{.subject = L"Plans",
                                       .body = L"The plans of the year.",
                                       .account = L"me@a.example",
                                       .recipients = {{.name = L"You", .address = L"you@b.example"}},
                                       .attachments = {{.fileName = L"plan.txt", .content = "secret"}}};

/// A controller of an embedded Outlook.
class OutlookControllerTest : public OutlookTest {
protected:
    OutlookControllerTest() {
        vorlek::OutlookControllerPeer::ForgetWindows();
        peer.SetEmbedded(true);
        peer.SetApplication(App());
        log.Clear();
    }
    ~OutlookControllerTest() override {
        controller.RestoreExplorerWindow_();
        vorlek::OutlookControllerPeer::ForgetWindows();
    }

    Outlook::_ApplicationPtr App() const { return outlook->Application().GetInterfacePtr(); }

    /// The send event of a new mail; the result is Cancel.
    bool Inspect(const stand_ins::ItemData& data = kMail) { return InspectItem(outlook->NewMail(data)); }
    bool InspectItem(const stand_ins::DispatchPtr& item) {
        outlook->Calls().Clear();
        log.Clear();
        return controller.InspectItemBeforeSending(item.GetInterfacePtr());
    }

    /// What the agent was asked, method by method.
    static std::vector<std::wstring> Methods(const stand_ins::Agent& agent) {
        std::vector<std::wstring> methods;
        for (const auto& request : agent.Requests()) {
            methods.push_back(request.method);
        }
        return methods;
    }
    static stand_ins::AgentOptions With(stand_ins::Policy policy) {
        stand_ins::AgentOptions options;
        options.policy = std::move(policy);
        return options;
    }
    std::wstring File(const std::wstring& name, const std::string& bytes) {
        test_support::WriteBytes(folder / name, bytes);
        return (folder / name).wstring();
    }

    vorlek::OutlookController controller;
    vorlek::OutlookControllerPeer peer{controller};
};

} // namespace outlook_tests
