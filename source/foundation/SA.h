#pragma once
#include "foundation/ACL.h"
#include "platform/Windows.h"

/// Security attributes with the descriptor that they point to.
class SA {
public:
    /// inheritHandle: whether child processes inherit the handle of what is created with it.
    /// Raises Exception.
    SA(const DACL& dacl, bool inheritHandle);
    SA(const DACL& dacl, const SACL& sacl, bool inheritHandle);
    SA(const SA&) = delete;
    SA& operator=(const SA&) = delete;
    virtual ~SA();

    /// What the system's functions take; it lives as long as this object.
    SECURITY_ATTRIBUTES* GetSecurityAttributes() { return &attributes_; }

private:
    void Init();

    SECURITY_ATTRIBUTES attributes_;
    DACL dacl_;
    SACL sacl_;
};
