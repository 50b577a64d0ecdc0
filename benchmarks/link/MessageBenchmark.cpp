#include <string>

#include "platform/Windows.h"

#include <comdef.h>
#include <xmllite.h>

#include "benchmarks/support/Row.h"
#include "plugin-link/Message.h"

namespace {

using vorlek::Message;

_COM_SMARTPTR_TYPEDEF(IXmlReader, __uuidof(IXmlReader));
_COM_SMARTPTR_TYPEDEF(IXmlWriter, __uuidof(IXmlWriter));
_COM_SMARTPTR_TYPEDEF(IUnknown, __uuidof(IUnknown));
_COM_SMARTPTR_TYPEDEF(IStream, __uuidof(IStream));

constexpr ULONGLONG kRoom = 1 << 23; ///< more bytes than the whole message has

/// 1 M characters of a document, with what must be escaped.
const std::wstring& Param_() {
    static const std::wstring param = [] {
        std::wstring text;
        while (text.size() < 1 << 20) {
            text += L"<entry name=\"EmailBody\">Figures for Z\x00FCrich &amp; Basel, for internal use</entry>\n";
        }
        return text;
    }();
    return param;
}

void ThereAndBack_(benchmark::State& state) {
    Message message(vorlek::MessageType::Request);
    message.Set(L"Plugin", L"DataControlPlugin", false);
    message.Set(L"Method", L"Inspect", false);
    message.Set(L"Param", Param_(), false);
    for (auto turn : state) {
        if (!Message::FromString(message.ToString())->HasValue(L"Param")) {
            return state.SkipWithError("what is read is not what was written");
        }
    }
}

void WriteKey_(IXmlWriter& writer, const wchar_t* name, const wchar_t* size, const wchar_t* value) {
    writer.WriteStartElement(nullptr, L"Key", nullptr);
    writer.WriteAttributeString(nullptr, L"name", nullptr, name);
    writer.WriteAttributeString(nullptr, L"type", nullptr, L"string");
    writer.WriteAttributeString(nullptr, L"size", nullptr, size);
    writer.WriteAttributeString(nullptr, L"hidden", nullptr, L"0");
    writer.WriteString(value);
    writer.WriteEndElement();
}

void RawWrite_(IStream* stream) {
    IXmlWriterPtr writer;
    IUnknownPtr output;
    CreateXmlWriter(__uuidof(IXmlWriter), reinterpret_cast<void**>(&writer), nullptr);
    writer->SetProperty(XmlWriterProperty_Indent, TRUE);
    writer->SetProperty(XmlWriterProperty_ByteOrderMark, FALSE);
    CreateXmlWriterOutputWithEncodingName(stream, nullptr, L"utf-16", &output);
    writer->SetOutput(output);
    writer->WriteStartDocument(XmlStandalone_Omit);
    writer->WriteStartElement(nullptr, L"Msg", nullptr);
    writer->WriteAttributeString(nullptr, L"version", nullptr, L"1");
    writer->WriteAttributeString(nullptr, L"type", nullptr, L"Request");
    writer->WriteAttributeString(nullptr, L"pid", nullptr, L"1234");
    WriteKey_(*writer, L"Method", L"14", L"Inspect");
    WriteKey_(*writer, L"Param", L"2097152", Param_().c_str());
    WriteKey_(*writer, L"Plugin", L"34", L"DataControlPlugin");
    writer->WriteEndDocument();
    writer->Flush();
}

bool RawRead_(IStream* stream) {
    IXmlReaderPtr reader;
    CreateXmlReader(__uuidof(IXmlReader), reinterpret_cast<void**>(&reader), nullptr);
    reader->SetInput(stream);
    std::size_t characters = 0;
    const wchar_t* text = nullptr;
    UINT length = 0;
    for (XmlNodeType type; reader->Read(&type) == S_OK;) {
        if (type == XmlNodeType_Text) {
            reader->GetValue(&text, &length);
            characters += length;
        } else if (type == XmlNodeType_Element) {
            for (HRESULT at = reader->MoveToFirstAttribute(); at == S_OK; at = reader->MoveToNextAttribute()) {
                reader->GetLocalName(&text, &length);
                reader->GetValue(&text, &length);
            }
        }
    }
    return characters > Param_().size();
}

void RawThereAndBack_(benchmark::State& state) {
    for (auto turn : state) {
        IStreamPtr stream;
        CreateStreamOnHGlobal(nullptr, TRUE, &stream);
        stream->SetSize({.QuadPart = kRoom}); // once: Wine's stream is copied each time that it grows
        RawWrite_(stream);
        ULARGE_INTEGER end;
        stream->Seek({}, STREAM_SEEK_CUR, &end);
        stream->SetSize(end);
        stream->Seek({}, STREAM_SEEK_SET, nullptr);
        if (!RawRead_(stream)) {
            return state.SkipWithError("what is read is not what was written");
        }
    }
}

const benchmark_support::Row message("message of 1 M characters to text and back / XmlLite", "at most 1.3",
                                     ThereAndBack_, RawThereAndBack_);

} // namespace
