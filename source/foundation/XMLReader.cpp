#include "foundation/XMLReader.h"

#include "foundation/Lock.h"
#include "foundation/SequentialStream.h"
#include "foundation/Throw.h"

namespace vorlek {

namespace {

void Check_(HRESULT result, ThrowSite site, const wchar_t* words) {
    if (FAILED(result)) {
        Throw(site, words, result);
    }
}

std::wstring GetLocalName_(IXmlReader& reader, ThrowSite site) {
    const wchar_t* name = nullptr;
    UINT length = 0;
    Check_(reader.GetLocalName(&name, &length), site, L"GetLocalName failed with: ");
    return {name, length};
}

std::wstring GetValue_(IXmlReader& reader, ThrowSite site) {
    const wchar_t* value = nullptr;
    UINT length = 0;
    Check_(reader.GetValue(&value, &length), site, L"GetValue failed with: ");
    return {value, length};
}

} // namespace

XMLReader::XMLReader(std::wiostream& stream) {
    Check_(CreateXmlReader(__uuidof(IXmlReader), reinterpret_cast<void**>(&reader_), nullptr),
           L"vorlek::XMLReader::XMLReader", L"CreateXmlReader failed with: ");
    Check_(reader_->SetProperty(XmlReaderProperty_DtdProcessing, DtdProcessing_Prohibit),
           L"vorlek::XMLReader::XMLReader", L"SetProperty failed with: ");
    Check_(SequentialStream::CreateStream(stream, &stream_), L"vorlek::XMLReader::XMLReader",
           L"CreateStream failed with: ");
    Check_(reader_->SetInput(stream_), L"vorlek::XMLReader::XMLReader", L"SetInput failed with: ");
}

std::shared_ptr<XMLNode> XMLReader::ReadNode() {
    const Lock lock(lock_);
    for (;;) {
        XmlNodeType type = XmlNodeType_None;
        const HRESULT result = reader_->Read(&type);
        Check_(result, L"vorlek::XMLReader::ReadNode", L"Read failed with: ");
        if (result == S_FALSE) {
            return nullptr;
        }
        switch (type) {
        case XmlNodeType_Element:
            return std::make_shared<XMLNode>(XMLNode::StartElement,
                                             GetLocalName_(*reader_, L"vorlek::XMLReader::ReadNode"));
        case XmlNodeType_EndElement:
            return std::make_shared<XMLNode>(XMLNode::EndElement,
                                             GetLocalName_(*reader_, L"vorlek::XMLReader::ReadNode"));
        case XmlNodeType_Text:
            return std::make_shared<XMLNode>(XMLNode::Text, GetValue_(*reader_, L"vorlek::XMLReader::ReadNode"));
        default:
            break;
        }
    }
}

std::map<std::wstring, std::wstring> XMLReader::ReadAttributes() {
    const Lock lock(lock_);
    std::map<std::wstring, std::wstring> attributes;
    HRESULT result = reader_->MoveToFirstAttribute();
    Check_(result, L"vorlek::XMLReader::ReadAttributes", L"MoveToFirstAttribute failed with: ");
    // Only the first move is checked: a later one that fails ends the list like its end does.
    for (; result == S_OK; result = reader_->MoveToNextAttribute()) {
        if (!reader_->IsDefault()) {
            std::wstring name = GetLocalName_(*reader_, L"vorlek::XMLReader::ReadAttributes");
            attributes.emplace(std::move(name), GetValue_(*reader_, L"vorlek::XMLReader::ReadAttributes"));
        }
    }
    return attributes;
}

UINT XMLReader::GetLineNumber() {
    const Lock lock(lock_);
    UINT line = 0;
    Check_(reader_->GetLineNumber(&line), L"vorlek::XMLReader::GetLineNumber", L"GetLineNumber failed with: ");
    return line;
}

UINT XMLReader::GetLinePosition() {
    const Lock lock(lock_);
    UINT position = 0;
    Check_(reader_->GetLinePosition(&position), L"vorlek::XMLReader::GetLinePosition",
           L"GetLinePosition failed with: ");
    return position;
}

} // namespace vorlek
