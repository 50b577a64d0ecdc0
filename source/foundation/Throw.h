#pragma once
#include <source_location>
#include <sstream>
#include <string>
#include <utility>

#include "foundation/Exception.h"

namespace vorlek {

/// The literal qualified name of the throwing function, with the file and line where it was written.
class ThrowSite {
public:
    template <std::size_t Size>
    // Implicit, so that a throw site is one call that begins with a plain literal.
    constexpr ThrowSite(const wchar_t (&location)[Size], std::source_location source = std::source_location::current())
        : location_(location), source_(source) {}

    /// The source file's name without its directories.
    std::wstring File() const;
    std::int32_t Line() const { return static_cast<std::int32_t>(source_.line()); }
    std::wstring Location() const { return location_; }

private:
    const wchar_t* location_;
    std::source_location source_;
};

/// Throws a Failure whose words are the parts, streamed one after the other; numbers in decimal.
template <class Failure = Exception, class... Parts>
[[noreturn]] void Throw(ThrowSite site, const Parts&... parts) {
    std::wostringstream words;
    static_cast<void>((words << ... << parts)); // no parts, no words
    throw Failure(site.File(), site.Line(), site.Location(), std::move(words).str());
}

} // namespace vorlek
