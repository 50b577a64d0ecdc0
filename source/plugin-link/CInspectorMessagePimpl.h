#pragma once
#include <memory>
#include <optional>

#include "platform/ticpp/ticpp.h"

namespace vorlek {

/// The document behind an inspector message, with its two elements that grow.
class CInspectorMessagePimpl {
public:
    std::shared_ptr<ticpp::Document> document;
    std::optional<ticpp::Element> root;    ///< "inspectorMessage", owned by the document
    std::optional<ticpp::Element> context; ///< "context", owned by the document
};

} // namespace vorlek
