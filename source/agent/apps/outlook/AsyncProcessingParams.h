#pragma once
#include <memory>
#include <string>

#include "platform/Windows.h"
#include "plugin-link/CInspectorMessage.h"
#include "plugin-link/InspectionDecision.h"

namespace vorlek {

class OutlookController;

/// One inspection beside the send event, as the worker and the UI thread hand it to each other. The item goes along
/// by its ID alone: no pointer to it leaves the thread it came from. Whoever changes it owns it; no lock is needed.
class AsyncProcessingParams {
public:
    /// Neither the controller nor the message is owned.
    AsyncProcessingParams(OutlookController* controller, std::wstring itemId, CInspectorMessage* message);
    AsyncProcessingParams(const AsyncProcessingParams&) = delete;
    AsyncProcessingParams& operator=(const AsyncProcessingParams&) = delete;
    virtual ~AsyncProcessingParams();

    /// The object that a window message carries, null for a value that is none: numbers from WM_USER on are the
    /// window's own, and Outlook may use ours for something else.
    static AsyncProcessingParams* From(WPARAM parameter);

    OutlookController* GetController() const { return controller_; }
    std::wstring GetItemId() const { return itemId_; }
    CInspectorMessage* GetInspectorMessage() const { return message_; }
    /// Null until the item was found fit to be sent.
    std::shared_ptr<InspectionDecision> GetDecision() const { return decision_; }
    void SetDecision(std::shared_ptr<InspectionDecision> decision) { decision_ = std::move(decision); }

private:
    OutlookController* controller_;
    std::wstring itemId_;
    CInspectorMessage* message_;
    std::shared_ptr<InspectionDecision> decision_;
};

} // namespace vorlek
