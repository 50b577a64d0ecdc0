#pragma once
#include <cstdint>
#include <iosfwd>
#include <map>
#include <string>

#include "platform/Windows.h"

#include <comdef.h>
#include <xmllite.h>

#include "foundation/CriticalSection.h"
#include "foundation/XMLNode.h"

namespace vorlek {

/// Writes a UTF-16 document node by node. Every operation raises Exception with the HRESULT in its words.
class XMLWriter {
public:
    enum Option : std::uint32_t { NoIndent = 1, OmitXmlDeclaration = 2, NoByteOrderMark = 4 };

    /// The stream must outlive the writer, or its EndDocument. options: a mask of Option.
    XMLWriter(std::wiostream& stream, std::uint32_t options);
    virtual ~XMLWriter() = default;

    void StartDocument();
    /// Closes open elements, hands everything to the stream and lets go of it.
    void EndDocument();

    /// Also raises for a type that is none of XMLNode's; the document stays usable then.
    void WriteNode(const XMLNode& node);
    /// What WriteNode does with a node of a text, without a copy of it in a node.
    void WriteText(const std::wstring& text);
    /// Adds to the element just started.
    void WriteAttribute(const std::wstring& name, const std::wstring& value);
    /// Adds all pairs, in key order, with no other thread's attribute between them.
    void WriteAttributes(const std::map<std::wstring, std::wstring>& attributes);

private:
    void SetProperty_(XmlWriterProperty property, bool value);

    _com_ptr_t<_com_IIID<IXmlWriter, &__uuidof(IXmlWriter)>> writer_;
    _com_ptr_t<_com_IIID<IUnknown, &__uuidof(IUnknown)>> output_;
    _com_ptr_t<_com_IIID<ISequentialStream, &__uuidof(ISequentialStream)>> stream_;
    CriticalSection lock_;
};

} // namespace vorlek
