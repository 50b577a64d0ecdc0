#include "foundation/ACL.h"

#include <utility>

ACLBase::ACLBase(std::vector<ACE> entries, bool isDacl, bool isProtected)
    : entries_(std::move(entries)), isDacl_(isDacl), isProtected_(isProtected) {}

std::wstring ACLBase::ToString() const {
    if (!isDacl_ && entries_.empty()) {
        return {};
    }
    std::wstring text = isDacl_ ? L"D:" : L"S:";
    if (isProtected_) {
        text += L"P";
    }
    for (const ACE& entry : entries_) {
        text += entry.ToString();
    }
    return text;
}

DACL::DACL(std::vector<ACE> entries, bool isProtected) : ACLBase(std::move(entries), true, isProtected) {}

SACL::SACL(std::vector<ACE> entries, bool isProtected) : ACLBase(std::move(entries), false, isProtected) {}
