#pragma once
#include <stdexcept>

namespace plugin_link_tests {

/// What the body throws: a Failure, or a class derived from it, by its exact words. Anything else passes on.
template <class Failure, class Body>
Failure Thrown(Body&& body) {
    try {
        body();
    } catch (const Failure& failure) {
        return failure;
    }
    throw std::logic_error("nothing was thrown");
}

/// The name of the most derived class of what the body throws.
template <class Failure, class Body>
auto ThrownName(Body&& body) {
    try {
        body();
    } catch (const Failure& failure) {
        return failure.GetExceptionName();
    }
    throw std::logic_error("nothing was thrown");
}

} // namespace plugin_link_tests
