#pragma once
#include <functional>

#include "agent/apps/outlook/Connect.h"

namespace outlook_tests {

/// Hears the send event of an Outlook, as the add-in's own sink does. The result of the function is Cancel.
class EventSink
    : public ATL::IDispEventSimpleImpl<vorlek::kApplicationSink, EventSink, &vorlek::DIID_ApplicationEvents> {
public:
    BEGIN_SINK_MAP(EventSink)
    SINK_ENTRY_INFO(vorlek::kApplicationSink, vorlek::DIID_ApplicationEvents, vorlek::kItemSend, &EventSink::OnItemSend,
                    &vorlek::kItemSendInfo)
    END_SINK_MAP()

    EventSink(IUnknown* application, std::function<bool(IDispatch*)> decide)
        : decide_(std::move(decide)), application_(application) {
        DispEventAdvise(application_);
    }
    ~EventSink() { DispEventUnadvise(application_); }

    ULONG AddRef() { return 1; } // it lives as long as its owner wants
    ULONG Release() { return 1; }

    void OnItemSend(IDispatch* item, VARIANT_BOOL* cancel) { *cancel = decide_(item) ? VARIANT_TRUE : VARIANT_FALSE; }

private:
    std::function<bool(IDispatch*)> decide_;
    _com_ptr_t<_com_IIID<IUnknown, &IID_IUnknown>> application_;
};

} // namespace outlook_tests
