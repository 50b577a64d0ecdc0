#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/Interfaces.h"
#include "stand-ins/outlook/Item.h"

namespace stand_ins {
namespace {

constexpr long kMailClass = 43;

// The names of one kind of recipient, as the line of the inspector shows them.
std::wstring Names(const ItemRecord& record, long type) {
    std::wstring names;
    for (const auto& recipient : record.recipients) {
        if (recipient->type == type) {
            names += (names.empty() ? L"" : L"; ") + (recipient->name.empty() ? recipient->address : recipient->name);
        }
    }
    return names;
}

_variant_t RtfOf(Item& item) {
    const std::string rtf = item.Alive().RtfBody();
    VARIANT value;
    VariantInit(&value);
    value.parray = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(rtf.size()));
    if (value.parray == nullptr) {
        throw Failure{E_OUTOFMEMORY, L"Out of memory."};
    }
    value.vt = VT_ARRAY | VT_UI1;
    std::copy(rtf.begin(), rtf.end(), static_cast<char*>(value.parray->pvData));
    return _variant_t(value, false);
}

void SetRtf(Item& item, const _variant_t& value) {
    if (value.vt != (VT_ARRAY | VT_UI1) || value.parray->cDims != 1) {
        throw BadCall{DISP_E_TYPEMISMATCH};
    }
    item.Changing().SetRtfBody({static_cast<const char*>(value.parray->pvData), value.parray->rgsabound[0].cElements});
}

ClassOf<Item> BuildMailItemClass() {
    ClassOf<Item> members(L"MailItem", kMailItemId, &SentItemClass());
    members.Get(L"Class", [](Item&) { return _variant_t(kMailClass); })
        .Get(L"BodyFormat", [](Item& item) { return _variant_t(item.Alive().data.bodyFormat); })
        .Put(L"BodyFormat", [](Item& item, const Arguments& a) { item.Changing().SetBodyFormat(a.Number(0)); })
        .Get(L"HTMLBody", [](Item& item) { return TextValue(item.Alive().HtmlBody()); })
        .Put(L"HTMLBody", [](Item& item, const Arguments& a) { item.Changing().SetHtmlBody(a.Text(0)); })
        .Get(L"RTFBody", [](Item& item) { return RtfOf(item); })
        .Put(L"RTFBody", [](Item& item, const Arguments& a) { SetRtf(item, a.Value(0)); })
        .Get(L"AutoForwarded", [](Item& item) { return _variant_t(item.Alive().data.autoForwarded); })
        .Put(L"AutoForwarded", [](Item& item, const Arguments& a) { item.Changing().data.autoForwarded = a.Truth(0); })
        .Get(L"VotingResponse", [](Item& item) { return TextValue(item.Alive().data.votingResponse); })
        .Put(L"VotingResponse", [](Item& item, const Arguments& a) { item.Changing().data.votingResponse = a.Text(0); })
        .Get(L"Sent", [](Item& item) { return _variant_t(item.Alive().data.sent); })
        .Get(L"To", [](Item& item) { return TextValue(Names(item.Alive(), 1)); })
        .Get(L"CC", [](Item& item) { return TextValue(Names(item.Alive(), 2)); })
        .Get(L"BCC", [](Item& item) { return TextValue(Names(item.Alive(), 3)); })
        .Call(L"Send", 0, 0, [](Item& item, const Arguments&) { SendByProgram(item); });
    return members;
}

} // namespace

const Class& MailItemClass() {
    static const Class members = BuildMailItemClass();
    return members;
}

} // namespace stand_ins
