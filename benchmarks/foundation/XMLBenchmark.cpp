#include <sstream>

#include "benchmarks/support/Row.h"
#include "foundation/XMLReader.h"
#include "foundation/XMLWriter.h"

namespace {

using namespace vorlek;

_COM_SMARTPTR_TYPEDEF(IXmlReader, __uuidof(IXmlReader));
_COM_SMARTPTR_TYPEDEF(IXmlWriter, __uuidof(IXmlWriter));
_COM_SMARTPTR_TYPEDEF(IUnknown, __uuidof(IUnknown));
_COM_SMARTPTR_TYPEDEF(IStream, __uuidof(IStream));

constexpr int kElements = 5000;
constexpr wchar_t kText[] = L"Quarterly figures, for internal use";

void Write_(std::wstringstream& stream) {
    XMLWriter writer(stream, XMLWriter::NoIndent | XMLWriter::NoByteOrderMark);
    writer.StartDocument();
    writer.WriteNode({XMLNode::StartElement, L"items"});
    for (int element = 0; element < kElements; ++element) {
        writer.WriteNode({XMLNode::StartElement, L"item"});
        writer.WriteAttribute(L"kind", L"mail");
        writer.WriteNode({XMLNode::Text, kText});
        writer.WriteNode({XMLNode::EndElement, L""});
    }
    writer.EndDocument();
}

const std::wstring& Document_() {
    static const std::wstring document = [] {
        std::wstringstream stream;
        Write_(stream);
        return stream.str();
    }();
    return document;
}

void XmlWriter_(benchmark::State& state) {
    for (auto turn : state) {
        std::wstringstream stream;
        Write_(stream);
        benchmark::DoNotOptimize(std::move(stream).str());
    }
}

void RawWriter_(benchmark::State& state) {
    for (auto turn : state) {
        IStreamPtr stream;
        IXmlWriterPtr writer;
        IUnknownPtr output;
        CreateStreamOnHGlobal(nullptr, TRUE, &stream);
        CreateXmlWriter(__uuidof(IXmlWriter), reinterpret_cast<void**>(&writer), nullptr);
        writer->SetProperty(XmlWriterProperty_ByteOrderMark, FALSE);
        CreateXmlWriterOutputWithEncodingName(stream, nullptr, L"utf-16", &output);
        writer->SetOutput(output);
        writer->WriteStartDocument(XmlStandalone_Omit);
        writer->WriteStartElement(nullptr, L"items", nullptr);
        for (int element = 0; element < kElements; ++element) {
            writer->WriteStartElement(nullptr, L"item", nullptr);
            writer->WriteAttributeString(nullptr, L"kind", nullptr, L"mail");
            writer->WriteString(kText);
            writer->WriteEndElement();
        }
        writer->WriteEndDocument();
        writer->Flush();
    }
}

void XmlReader_(benchmark::State& state) {
    const std::wstring& document = Document_();
    for (auto turn : state) {
        std::wstringstream stream(document);
        XMLReader reader(stream);
        int elements = 0;
        while (const auto node = reader.ReadNode()) {
            if (node->GetType() == XMLNode::StartElement) {
                benchmark::DoNotOptimize(reader.ReadAttributes());
                ++elements;
            }
        }
        if (elements != kElements + 1) {
            state.SkipWithError("elements are missing");
        }
    }
}

void RawReader_(benchmark::State& state) {
    const std::wstring& document = Document_();
    for (auto turn : state) {
        IStreamPtr stream;
        IXmlReaderPtr reader;
        CreateStreamOnHGlobal(nullptr, TRUE, &stream);
        stream->Write(document.data(), static_cast<ULONG>(document.size() * sizeof(wchar_t)), nullptr);
        stream->Seek({}, STREAM_SEEK_SET, nullptr);
        CreateXmlReader(__uuidof(IXmlReader), reinterpret_cast<void**>(&reader), nullptr);
        reader->SetInput(stream);
        int elements = 0;
        const wchar_t* text = nullptr;
        UINT length = 0;
        for (XmlNodeType type; reader->Read(&type) == S_OK;) {
            if (type == XmlNodeType_Text) {
                reader->GetValue(&text, &length);
                continue;
            }
            reader->GetLocalName(&text, &length);
            if (type == XmlNodeType_Element) {
                ++elements;
                for (HRESULT at = reader->MoveToFirstAttribute(); at == S_OK; at = reader->MoveToNextAttribute()) {
                    reader->GetLocalName(&text, &length);
                    reader->GetValue(&text, &length);
                }
            }
        }
        if (elements != kElements + 1) {
            state.SkipWithError("elements are missing");
        }
    }
}

const benchmark_support::Row write("XML text of 5,000 elements / raw XmlLite", "", XmlWriter_, RawWriter_);
const benchmark_support::Row read("the same XML text read / raw XmlLite", "", XmlReader_, RawReader_);

} // namespace
