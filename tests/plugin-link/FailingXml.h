#pragma once

namespace plugin_link_tests {

/// Lets the XML library fail on the calling thread for as long as it lives, with the words "no way".
class FailingXml {
public:
    enum class At { Link, Print };

    /// at: the operation that fails. nth: which of its calls, from 1.
    explicit FailingXml(At at, int nth = 1);
    ~FailingXml();
    FailingXml(const FailingXml&) = delete;
    FailingXml& operator=(const FailingXml&) = delete;
};

} // namespace plugin_link_tests
