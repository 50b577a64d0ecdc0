#pragma once
// The part of the Redemption library that the add-in uses, called by name like Outlook's own objects.
#include "platform/com/LateBound.h"

LATE_BOUND_INTERFACE(Redemption, ISafeItem, 0xDBCAD616, 0xBFD4, 0x4C72, 0x8D, 0x87, 0xC5, 0x92, 0x69, 0x21, 0xD3, 0x78)
LATE_BOUND_INTERFACE(Redemption, ISafeCurrentUser, 0xD7E6FB7C, 0xA22F, 0x4A9D, 0xA8, 0x9D, 0x65, 0x3D, 0x1A, 0xA3, 0x73,
                     0x24)
LATE_BOUND_INTERFACE(Redemption, IRDOSession, 0xE54C5168, 0xAA8C, 0x405F, 0x9C, 0x14, 0xA4, 0x03, 0x73, 0x02, 0xBD,
                     0x9D)
LATE_BOUND_INTERFACE(Redemption, IRDOMail, 0xD85047E0, 0x7767, 0x4D48, 0x86, 0xB6, 0x28, 0xBD, 0xB5, 0x72, 0x8A, 0xBB)
LATE_BOUND_INTERFACE(Redemption, IRDOAttachments, 0x9ED8DA28, 0x908D, 0x4DA3, 0xB7, 0xAC, 0x8D, 0xF8, 0x58, 0x7A, 0x9D,
                     0xD0)

namespace Redemption {

using platform::LateBound;

/// Reads past the object model's guard what Outlook would ask its user about.
struct ISafeItem : LateBound {
    void PutItem(IDispatch* item) { Put_(L"Item", item); }
    _bstr_t GetBody() { return Get_<_bstr_t>(L"Body"); }
};

struct ISafeCurrentUser : LateBound {
    _bstr_t GetSMTPAddress() { return Get_<_bstr_t>(L"SMTPAddress"); }
};

struct IRDOSession : LateBound {
    /// shallow: the view shares the item's own MAPI object, unsaved changes included.
    IDispatchPtr GetRDOObjectFromOutlookObject(IDispatch* object, const _variant_t& shallow) {
        return Call_<IDispatchPtr>(L"GetRDOObjectFromOutlookObject", object, shallow);
    }
};

struct IRDOAttachments : LateBound {
    long GetCount() { return Get_<long>(L"Count"); }
    void Clear() { Do_(L"Clear"); }
    void Add(const _variant_t& source, const _variant_t& type, const _variant_t& position,
             const _variant_t& displayName) {
        Do_(L"Add", source, type, position, displayName);
    }
};

struct IRDOMail : LateBound {
    IRDOAttachmentsPtr GetAttachments() { return Get_<IRDOAttachmentsPtr>(L"Attachments"); }
    void Save() { Do_(L"Save"); }
    void SaveAs(const _bstr_t& path, const _variant_t& type) { Do_(L"SaveAs", path, type); }
    void Import(const _bstr_t& path, const _variant_t& type) { Do_(L"Import", path, type); }
};

} // namespace Redemption
