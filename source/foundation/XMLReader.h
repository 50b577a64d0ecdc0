#pragma once
#include <iosfwd>
#include <map>
#include <memory>
#include <string>

#include "platform/Windows.h"

#include <comdef.h>
#include <xmllite.h>

#include "foundation/CriticalSection.h"
#include "foundation/XMLNode.h"

namespace vorlek {

/// Reads a UTF-16 document node by node; no tree is built. Documents with a document type definition
/// are refused. Every operation raises Exception with the HRESULT in its words.
class XMLReader {
public:
    /// The stream must outlive the reader.
    explicit XMLReader(std::wiostream& stream);
    virtual ~XMLReader() = default;

    /// The next start of an element, end of an element or text, all else skipped; empty at the end of
    /// the input. A self-closed element has no end node.
    std::shared_ptr<XMLNode> ReadNode();

    /// The attributes of the element just read, by local name; defaulted ones are left out.
    std::map<std::wstring, std::wstring> ReadAttributes();

    /// Where in the input the reader stands, for words about what is wrong there.
    UINT GetLineNumber();
    UINT GetLinePosition();

private:
    _com_ptr_t<_com_IIID<IXmlReader, &__uuidof(IXmlReader)>> reader_;
    _com_ptr_t<_com_IIID<ISequentialStream, &__uuidof(ISequentialStream)>> stream_;
    CriticalSection lock_;
};

} // namespace vorlek
