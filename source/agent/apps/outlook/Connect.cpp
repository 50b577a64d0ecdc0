#include "agent/apps/outlook/Connect.h"

#include "agent/apps/outlook/CommonUtils.h"
#include "agent/apps/outlook/GlobalConfig.h"
#include "agent/apps/outlook/WorkerThread.h"
#include "foundation/Border.h"
#include "foundation/Log4CxxHelper.h"

namespace vorlek {
namespace {

/// Loading and unloading share their words, the name of the latter in the last ones included.
constexpr BorderPhrases kConnectionPhrases = {
    .exception = {L""},
    .comError = {L"Caught a com exception: "},
    .stdException = {L""},
    .other = {L"CConnect::OnDisconnection crashed for Unknown error"},
};

constexpr BorderPhrases kMailSendPhrases = {
    .exception = {L"OnMailSend:ex="},
    .comError = {L"OnMailSend:Caught a com exception:err= "},
    .stdException = {L"OnMailSend:ex.what="},
    .other = {L"CConnect::OnMailSend crashed for Unknown error"},
};

} // namespace

LoggerHolder CConnect::logger_;

CConnect::CConnect() {
    InitLogger(logger_, "vorlek::CConnect::CConnect", false);
}

CConnect::~CConnect() = default;

HRESULT CConnect::OnConnection(IDispatch* Application, ext_ConnectMode, IDispatch*, SAFEARRAY**) {
    bool isOutlook = true;
    Guard(logger_, LOG_SITE, kConnectionPhrases, [&] {
        LOG_INFO(logger_, L"Outlook plug-in started to load...");
        application_ = Application;
        if (!application_) {
            isOutlook = false;
            return;
        }
        GlobalConfig::SetOutlookApplication(application_);
        DispEventAdvise(application_);
        outlookController_.InitApplication(application_);
        outlookController_.HandleIncompleteInspections();
    });
    if (!isOutlook) {
        return S_FALSE;
    }
    LOG_INFO(logger_, L"Outlook plug-in was loaded");
    return S_OK;
}

HRESULT CConnect::OnDisconnection(ext_DisconnectMode, SAFEARRAY**) {
    if (WorkerThread::Running() != 0) {
        // For good: a worker looks at the controller to its end, and references are counted on this thread alone.
        AddRef();
    }
    Guard(logger_, LOG_SITE, kConnectionPhrases, [&] {
        DispEventUnadvise(application_);
        outlookController_.RestoreExplorerWindow_();
        LOG_INFO(logger_, L"Outlook plug-in was unloaded");
    });
    return S_OK;
}

HRESULT CConnect::OnAddInsUpdate(SAFEARRAY**) {
    LOG_INFO(logger_, L"CConnect::OnAddInsUpdate was called");
    return S_OK;
}

HRESULT CConnect::OnStartupComplete(SAFEARRAY**) {
    LOG_INFO(logger_, L"CConnect::OnStartupComplete was called");
    return S_OK;
}

HRESULT CConnect::OnBeginShutdown(SAFEARRAY**) {
    LOG_INFO(logger_, L"CConnect::OnBeginShutdown was called");
    return S_OK;
}

void CConnect::OnMailSend(IDispatch* item, VARIANT_BOOL* Cancel) {
    const bool decided = Guard(logger_, LOG_SITE, kMailSendPhrases, [&] {
        LOG_INFO(logger_, L"OnMailSend:Got an Outlook item for inspection.calling InspectItemBeforeSending");
        // Before anything else can fail: the send then stays stopped.
        *Cancel = VARIANT_TRUE;
        *Cancel = outlookController_.InspectItemBeforeSending(item) ? VARIANT_TRUE : VARIANT_FALSE;
    });
    if (!decided) {
        CommonUtils::ShowUnsentItemsWarning(logger_);
    }
}

} // namespace vorlek
