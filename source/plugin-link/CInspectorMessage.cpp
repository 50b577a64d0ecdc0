#include "plugin-link/CInspectorMessage.h"

#include <algorithm>

#include "foundation/ConversionsUtils.h"
#include "foundation/Log4CxxHelper.h"
#include "foundation/StringUtils.h"
#include "foundation/Throw.h"
#include "plugin-link/CInspectorMessagePimpl.h"
#include "plugin-link/Exceptions.h"
#include "plugin-link/Vocabulary.h"

namespace vorlek {
namespace {

namespace word = vocabulary::document;

constexpr wchar_t kReplacement = 0xFFFD; ///< what stands for a character that cannot be written

ticpp::Element Element_(const wchar_t* name) {
    return ticpp::Element(StringUtils::ToUtf8(name));
}

void SetAttribute_(ticpp::Element& element, const wchar_t* name, const std::wstring& value) {
    element.SetAttribute(StringUtils::ToUtf8(name), StringUtils::ToUtf8(value));
}

ticpp::Element Pair_(const wchar_t* element, const std::wstring& name, const std::wstring& value) {
    ticpp::Element pair = Element_(element);
    SetAttribute_(pair, word::kName, name);
    SetAttribute_(pair, word::kValue, value);
    return pair;
}

ticpp::Element Text_(const wchar_t* name, std::wstring_view text) {
    ticpp::Element element = Element_(name);
    element.SetText(StringUtils::ToUtf8(text));
    return element;
}

/// Makes one piece of the document; a failure of the XML library takes its words along.
template <class Make>
void Translated_(ThrowSite site, Make&& make) {
    try {
        make();
    } catch (const ticpp::Exception& failure) {
        Throw<CInspectorMessageXmlException>(site, StringUtils::FromUtf8(failure.what()));
    }
}

} // namespace

LoggerHolder CInspectorMessage::logger_;

CInspectorMessage::CInspectorMessage() : CInspectorMessage(std::wstring()) {}

CInspectorMessage::CInspectorMessage(const std::wstring& channel) : pimpl_(std::make_shared<CInspectorMessagePimpl>()) {
    InitLogger(logger_, "vorlek::CInspectorMessage::CInspectorMessage", false);
    _CreateMainElements(channel);
}

void CInspectorMessage::_CreateMainElements(const std::wstring& channel) {
    Translated_(L"vorlek::CInspectorMessage::_CreateMainElements", [&] {
        pimpl_->document = std::make_shared<ticpp::Document>();
        pimpl_->document->LinkEndChild(ticpp::Declaration("1.0", "", ""));
        ticpp::Element root = Element_(word::kInspectorMessage);
        SetAttribute_(root, word::kVersion, word::kDocumentVersion);
        SetAttribute_(root, word::kChannel, channel);
        pimpl_->document->LinkEndChild(root);
        pimpl_->root = pimpl_->document->FirstChildElement();
        pimpl_->root->LinkEndChild(Element_(word::kContext));
        pimpl_->context = pimpl_->root->FirstChildElement();
    });
}

void CInspectorMessage::AddContextItem(const std::wstring& key, const std::wstring& value) {
    if (key == vocabulary::key::kChannel) {
        SetAttribute_(*pimpl_->root, word::kChannel, value);
    } else {
        pimpl_->context->LinkEndChild(Pair_(word::kItem, key, value));
    }
}

void CInspectorMessage::AddContextItem(const std::wstring& key, std::uint32_t number) {
    AddContextItem(key, std::to_wstring(number));
}

void CInspectorMessage::AddProcessId() {
    AddContextItem(vocabulary::key::kProcessIdInt32, GetCurrentProcessId());
}

void CInspectorMessage::AddTextItemToBody(std::wstring_view text, const std::wstring& textFormat) {
    _AddDataItem(word::kText, text, nullptr, textFormat);
}

void CInspectorMessage::AddTextItemToBody(std::wstring_view text, const Items& items, const std::wstring& textFormat) {
    _AddDataItem(word::kText, text, &items, textFormat);
}

void CInspectorMessage::AddBinaryItemToBody(const BYTE* buffer, std::size_t length) {
    AddBinaryItem_(buffer, length, nullptr);
}

void CInspectorMessage::AddBinaryItemToBody(const BYTE* buffer, std::size_t length, const Items& items) {
    AddBinaryItem_(buffer, length, &items);
}

void CInspectorMessage::AddBinaryItem_(const BYTE* buffer, std::size_t length, const Items* items) {
    const std::wstring data = ConversionsUtils::Base64EncodeData(buffer, length);
    if (data.empty()) {
        Throw<CInspectorMessageException>(L"vorlek::CInspectorMessage::AddBinaryItemToBody",
                                          L"Failed to convert buffer to base64");
    }
    _AddDataItem(word::kBase64, data, items, {});
}

void CInspectorMessage::AddFileItemToBody(const std::wstring& path, bool isFolder) {
    _AddDataItem(isFolder ? word::kFolderPath : word::kFilePath, path, nullptr, {});
}

void CInspectorMessage::AddFileItemToBody(const std::wstring& path, const Items& items, bool isFolder) {
    _AddDataItem(isFolder ? word::kFolderPath : word::kFilePath, path, &items, {});
}

// The root is touched at the very end, so that of an item that fails nothing is left.
void CInspectorMessage::_AddDataItem(const std::wstring& encoding, std::wstring_view data, const Items* items,
                                     const std::wstring& textFormat) {
    Translated_(L"vorlek::CInspectorMessage::_AddDataItem", [&] {
        ticpp::Element dataItem = Element_(word::kDataItem);
        if (items != nullptr) {
            for (const auto& [name, value] : *items) {
                dataItem.LinkEndChild(Pair_(word::kContextItem, name, value));
            }
        }
        if (!textFormat.empty()) {
            dataItem.LinkEndChild(Text_(word::kTextFormat, textFormat));
        }
        dataItem.LinkEndChild(Text_(word::kDataEncoding, encoding));
        dataItem.LinkEndChild(Text_(word::kData, data));
        pimpl_->root->LinkEndChild(dataItem);
    });
}

std::wstring CInspectorMessage::GetFormattedMessage() const {
    TiXmlPrinter printer;
    printer.SetStreamPrinting();
    pimpl_->document->Accept(&printer);
    std::wstring text = StringUtils::FromUtf8(printer.Str());
    // XML has no way to write these two, and a request that cannot be written leaves its mail uninspected.
    std::ranges::replace_if(
        text, [](wchar_t unit) { return unit == 0xFFFE || unit == 0xFFFF; }, kReplacement);
    return text;
}

} // namespace vorlek
