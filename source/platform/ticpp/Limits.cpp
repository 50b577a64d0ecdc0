#include "platform/ticpp/Limits.h"

#include <cstring>
#include <string>

#include "platform/ticpp/ticpp.h"

namespace ticpp {
namespace {

constexpr int kMaxDepth = 256;
constexpr int kMaxAttributes = 256;
constexpr TiXmlEncoding kEncoding = TIXML_ENCODING_UTF8;

/// Finds the markup where TinyXML's parser finds it, by that parser's own steps: a reading of our own that
/// differs in a quote or a reference would be a way past the limits. A null place is where the parser gives up.
class Scanner_ : private TiXmlElement {
public:
    Scanner_() : TiXmlElement("") {}

    void Scan(const char* at) {
        for (at = Skip_(at); at != nullptr; at = Skip_(at)) {
            at = Pass_(at);
        }
    }

private:
    /// Null also for the end of the text.
    static const char* Skip_(const char* at) {
        at = SkipWhiteSpace(at, kEncoding);
        return at != nullptr && *at != '\0' ? at : nullptr;
    }

    template <class Leaf, class... Arguments>
    static const char* PassLeaf_(const char* at, Arguments... arguments) {
        return Leaf(arguments...).Parse(at, nullptr, kEncoding);
    }

    const char* Pass_(const char* at) {
        const auto begins = [&](const char* markup, bool ignoreCase = false) {
            return StringEqual(at, markup, ignoreCase, kEncoding);
        };
        if (*at != '<' || begins("<![CDATA[")) {
            // Text outside of any element ends the document.
            return *at == '<' || depth_ > 0 ? PassLeaf_<TiXmlText>(at, "") : nullptr;
        }
        if (begins("</") && depth_ > 0) {
            --depth_;
            const char* end = std::strchr(at, '>');
            return end != nullptr ? end + 1 : nullptr;
        }
        if (begins("<?xml", true)) {
            return PassLeaf_<TiXmlDeclaration>(at);
        }
        if (begins("<!--")) {
            return PassLeaf_<TiXmlComment>(at);
        }
        if (IsAlpha(static_cast<unsigned char>(at[1]), kEncoding) != 0 || at[1] == '_') {
            return PassTag_(at);
        }
        return PassLeaf_<TiXmlUnknown>(at);
    }

    const char* PassTag_(const char* at) {
        std::string name;
        int attributes = 0;
        for (at = Skip_(ReadName(SkipWhiteSpace(at + 1, kEncoding), &name, kEncoding)); at != nullptr; at = Skip_(at)) {
            if (*at == '/') {
                return at[1] == '>' ? at + 2 : nullptr;
            }
            if (*at == '>') {
                if (++depth_ > kMaxDepth) {
                    throw Exception("Elements are nested more than " + std::to_string(kMaxDepth) + " deep");
                }
                return at + 1;
            }
            if (++attributes > kMaxAttributes) {
                throw Exception("An element has more than " + std::to_string(kMaxAttributes) + " attributes");
            }
            at = PassLeaf_<TiXmlAttribute>(at);
        }
        return nullptr;
    }

    int depth_ = 0;
};

} // namespace

void CheckLimits(const char* xml) {
    Scanner_().Scan(xml);
}

} // namespace ticpp
