#pragma once
#include <string>

#include <log4cxx/logger.h>

#include "platform/com/LateBound.h"
#include "plugin-link/CInspectorMessage.h"

namespace vorlek {

/// Reads an item of any kind through the object model of Outlook 2007 and later. No failure leaves: what
/// cannot be read is logged, by the caller's logger, and left out.
class Outlook2007Helper {
public:
    Outlook2007Helper() = delete;

    /// name: in Outlook's schema notation. VT_EMPTY for a property that is missing or cannot be read.
    static _variant_t GetProperty(IDispatchPtr item, const _bstr_t& name, const log4cxx::LoggerPtr& logger);
    /// The name of whom the item is sent for; empty if it is not a text.
    static _bstr_t GetRepresentedSenderName(IDispatchPtr item, const log4cxx::LoggerPtr& logger);
    /// The subject without its prefix; empty if it is not a text.
    static _bstr_t GetNormalizedSubject(IDispatchPtr item, const log4cxx::LoggerPtr& logger);
    /// The address of the account that the item is sent with; empty if it has none.
    static std::wstring GetItemSenderSMTP(IDispatchPtr item, const log4cxx::LoggerPtr& logger);
    /// Adds each resolved recipient that has an SMTP address, under the key of its type and as a destination.
    static void FillItemRecipients(IDispatchPtr item, CInspectorMessage& message, const log4cxx::LoggerPtr& logger);
    /// Saves each attachment to a temporary file and adds its path, with the name that the user sees.
    static void FillItemAttachments(IDispatchPtr item, CInspectorMessage& message, const log4cxx::LoggerPtr& logger);
};

} // namespace vorlek
