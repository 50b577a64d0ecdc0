#pragma once
#include <string>
#include <vector>

#include "foundation/ACE.h"

/// A list of entries, in order.
class ACLBase {
public:
    ACLBase(const ACLBase&) = default;
    ACLBase& operator=(const ACLBase&) = default;
    virtual ~ACLBase() = default;

    /// The list in the Security Descriptor Definition Language, nothing for a system list without
    /// entries. Raises Exception as ACE::ToString does.
    std::wstring ToString() const;

protected:
    ACLBase(std::vector<ACE> entries, bool isDacl, bool isProtected);

private:
    std::vector<ACE> entries_;
    bool isDacl_;
    bool isProtected_;
};

/// The discretionary list: who may do what. isProtected: nothing is inherited from above.
class DACL : public ACLBase {
public:
    explicit DACL(std::vector<ACE> entries = {}, bool isProtected = false);
};

/// The system list: here the mandatory label.
class SACL : public ACLBase {
public:
    explicit SACL(std::vector<ACE> entries = {}, bool isProtected = false);
};
