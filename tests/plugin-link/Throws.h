#pragma once
#include <stdexcept>
#include <typeinfo>

#include "foundation/Exception.h"

namespace plugin_link_tests {

/// What the body throws, which must be of exactly this class; an error of the test if it is not.
template <class Failure, class Body>
Failure Thrown(Body&& body) {
    try {
        body();
    } catch (const vorlek::Exception& failure) {
        if (typeid(failure) == typeid(Failure)) {
            return static_cast<const Failure&>(failure);
        }
        throw std::logic_error(std::string("thrown instead: ") + typeid(failure).name());
    }
    throw std::logic_error("nothing was thrown");
}

} // namespace plugin_link_tests
