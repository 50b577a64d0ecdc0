#include "tests/plugin-link/FailingXml.h"

#include "platform/ticpp/ticpp.h"

namespace {

thread_local int linksLeft = 0;
thread_local int printsLeft = 0;

void Count(int& left) {
    if (left > 0 && --left == 0) {
        throw ticpp::Exception("no way");
    }
}

} // namespace

// The linker sends the product's calls here, and leaves the library's own under the second name.
void RealLink(ticpp::Node* parent, ticpp::Node& child) __asm__("__real__ZN5ticpp4Node12LinkEndChildERS0_");
void WrappedLink(ticpp::Node* parent, ticpp::Node& child) __asm__("__wrap__ZN5ticpp4Node12LinkEndChildERS0_");
void WrappedLink(ticpp::Node* parent, ticpp::Node& child) {
    Count(linksLeft);
    RealLink(parent, child);
}

bool RealAccept(const ticpp::Node* node,
                TiXmlVisitor* visitor) __asm__("__real__ZNK5ticpp4Node6AcceptEP12TiXmlVisitor");
bool WrappedAccept(const ticpp::Node* node,
                   TiXmlVisitor* visitor) __asm__("__wrap__ZNK5ticpp4Node6AcceptEP12TiXmlVisitor");
bool WrappedAccept(const ticpp::Node* node, TiXmlVisitor* visitor) {
    Count(printsLeft);
    return RealAccept(node, visitor);
}

namespace plugin_link_tests {

FailingXml::FailingXml(At at, int nth) {
    (at == At::Link ? linksLeft : printsLeft) = nth;
}

FailingXml::~FailingXml() {
    linksLeft = 0;
    printsLeft = 0;
}

} // namespace plugin_link_tests
