#include "agent/apps/outlook/AsyncProcessingParams.h"

#include <utility>

#include "foundation/ThreadSafeMap.h"

namespace vorlek {
namespace {

/// All objects there are, by the number that stands for each in a window message.
ThreadSafeMap<WPARAM, AsyncProcessingParams*> living_;

WPARAM NumberOf_(const AsyncProcessingParams* params) {
    return reinterpret_cast<WPARAM>(params);
}

} // namespace

AsyncProcessingParams::AsyncProcessingParams(OutlookController* controller, std::wstring itemId,
                                             CInspectorMessage* message)
    : controller_(controller), itemId_(std::move(itemId)), message_(message) {
    living_.Insert(NumberOf_(this), this);
}

AsyncProcessingParams::~AsyncProcessingParams() {
    living_.Erase(NumberOf_(this));
}

AsyncProcessingParams* AsyncProcessingParams::From(WPARAM parameter) {
    return living_.Find(parameter).value_or(nullptr);
}

} // namespace vorlek
