#include "foundation/XMLWriter.h"

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

} // namespace

XMLWriter::XMLWriter(std::wiostream& stream, std::uint32_t options) {
    Check_(CreateXmlWriter(__uuidof(IXmlWriter), reinterpret_cast<void**>(&writer_), nullptr),
           L"vorlek::XMLWriter::XMLWriter", L"CreateXmlWriter failed with: ");
    SetProperty_(XmlWriterProperty_Indent, (options & NoIndent) == 0);
    SetProperty_(XmlWriterProperty_OmitXmlDeclaration, (options & OmitXmlDeclaration) != 0);
    SetProperty_(XmlWriterProperty_ByteOrderMark, (options & NoByteOrderMark) == 0);
    Check_(SequentialStream::CreateStream(stream, &stream_), L"vorlek::XMLWriter::XMLWriter",
           L"CreateStream failed with: ");
    Check_(CreateXmlWriterOutputWithEncodingName(stream_, nullptr, L"utf-16", &output_),
           L"vorlek::XMLWriter::XMLWriter", L"CreateXmlWriterOutputWithEncodingName failed with: ");
    Check_(writer_->SetOutput(output_), L"vorlek::XMLWriter::XMLWriter", L"SetInput failed with: ");
}

void XMLWriter::SetProperty_(XmlWriterProperty property, bool value) {
    Check_(writer_->SetProperty(property, value ? TRUE : FALSE), L"vorlek::XMLWriter::XMLWriter",
           L"SetProperty failed with: ");
}

void XMLWriter::StartDocument() {
    const Lock lock(lock_);
    Check_(writer_->WriteStartDocument(XmlStandalone_Omit), L"vorlek::XMLWriter::StartDocument",
           L"WriteStartDocument failed with: ");
}

void XMLWriter::EndDocument() {
    const Lock lock(lock_);
    Check_(writer_->WriteEndDocument(), L"vorlek::XMLWriter::EndDocument", L"WriteEndDocument failed with: ");
    Check_(writer_->Flush(), L"vorlek::XMLWriter::EndDocument", L"Flush failed with: ");
    // The words name the reader's operation; whoever reads logs knows them so.
    Check_(writer_->SetOutput(nullptr), L"vorlek::XMLWriter::EndDocument", L"SetInput failed with: ");
}

void XMLWriter::WriteNode(const XMLNode& node) {
    const Lock lock(lock_);
    const wchar_t* value = node.GetValue().c_str();
    switch (node.GetType()) {
    case XMLNode::StartElement:
        return Check_(writer_->WriteStartElement(nullptr, value, nullptr), L"vorlek::XMLWriter::WriteNode",
                      L"WriteStartElement failed with: ");
    case XMLNode::EndElement:
        return Check_(writer_->WriteEndElement(), L"vorlek::XMLWriter::WriteNode", L"WriteEndElement failed with: ");
    case XMLNode::Text:
        return WriteText(node.GetValue());
    }
    Throw(L"vorlek::XMLWriter::WriteNode", L"Unsupported type: ", static_cast<std::int32_t>(node.GetType()));
}

void XMLWriter::WriteText(const std::wstring& text) {
    const Lock lock(lock_);
    Check_(writer_->WriteString(text.c_str()), L"vorlek::XMLWriter::WriteNode", L"WriteString failed with: ");
}

void XMLWriter::WriteAttribute(const std::wstring& name, const std::wstring& value) {
    const Lock lock(lock_);
    const HRESULT result = writer_->WriteAttributeString(nullptr, name.c_str(), nullptr, value.c_str());
    if (FAILED(result)) {
        Throw(L"vorlek::XMLWriter::WriteAttribute", L"WriteAttributeString failed with: ", result, L" on [", name, L",",
              value, L"]");
    }
}

void XMLWriter::WriteAttributes(const std::map<std::wstring, std::wstring>& attributes) {
    const Lock lock(lock_);
    for (const auto& [name, value] : attributes) {
        WriteAttribute(name, value);
    }
}

} // namespace vorlek
