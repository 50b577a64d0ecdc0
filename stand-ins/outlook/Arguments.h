#pragma once
#include <string>
#include <vector>

#include "stand-ins/outlook/Com.h"
#include "stand-ins/outlook/Dispatch.h"

namespace stand_ins {

/// The arguments of one call in the order in which they are written, by-reference variants unwrapped.
class Arguments {
public:
    explicit Arguments(const DISPPARAMS& parameters);

    size_t Count() const { return values_.size(); }
    const std::vector<_variant_t>& All() const { return values_; }
    /// Whether the argument was given: an optional one is left out, or stands as DISP_E_PARAMNOTFOUND.
    bool Has(size_t index) const;

    /// Failure of the readers: BadCall with DISP_E_TYPEMISMATCH, or DISP_E_PARAMNOTOPTIONAL for one left out.
    std::wstring Text(size_t index) const;
    long Number(size_t index) const;
    bool Truth(size_t index) const;
    DispatchPtr Object(size_t index) const; ///< null for VT_EMPTY, VT_NULL and a null object
    const _variant_t& Value(size_t index) const;

private:
    _variant_t As_(size_t index, VARTYPE type) const;

    std::vector<_variant_t> values_;
};

/// Values for answers.
_variant_t TextValue(std::wstring_view text);
_variant_t ObjectValue(const DispatchPtr& object);

} // namespace stand_ins
