#pragma once
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "foundation/LoggerHolder.h"
#include "platform/Windows.h"

namespace vorlek {

class CInspectorMessagePimpl;

/// The document that tells the agent what is about to leave: through which channel, in what context,
/// and which data items. Copies share the document. Built and read by one thread.
class CInspectorMessage {
public:
    /// The context of one data item: key to value.
    using Items = std::map<std::wstring, std::wstring>;

    /// With an empty channel.
    CInspectorMessage();
    /// channel: one of vocabulary::channel. Throws CInspectorMessageXmlException.
    explicit CInspectorMessage(const std::wstring& channel);

    /// Adds to the context of the whole message; a key may come more than once. The key "Channel" sets
    /// the message's channel instead. Throws ticpp::Exception.
    void AddContextItem(const std::wstring& key, const std::wstring& value);
    void AddContextItem(const std::wstring& key, std::uint32_t number);
    /// Adds this process's ID to the context.
    void AddProcessId();

    /// Adds a data item. textFormat: such as vocabulary::textFormat::kClearText, empty for none. items:
    /// the item's own context. Each of these throws CInspectorMessageXmlException.
    void AddTextItemToBody(std::wstring_view text, const std::wstring& textFormat);
    void AddTextItemToBody(std::wstring_view text, const Items& items, const std::wstring& textFormat);
    /// length: in bytes. Throws CInspectorMessageException if there is nothing to encode.
    void AddBinaryItemToBody(const BYTE* buffer, std::size_t length);
    void AddBinaryItemToBody(const BYTE* buffer, std::size_t length, const Items& items);
    /// path: full path of a file or folder that the agent reads for itself.
    void AddFileItemToBody(const std::wstring& path, bool isFolder);
    void AddFileItemToBody(const std::wstring& path, const Items& items, bool isFolder);

    /// The whole document on one line. Can be repeated, and more added afterwards.
    std::wstring GetFormattedMessage() const;

private:
    void _CreateMainElements(const std::wstring& channel);
    void _AddDataItem(const std::wstring& encoding, std::wstring_view data, const Items* items,
                      const std::wstring& textFormat);
    void AddBinaryItem_(const BYTE* buffer, std::size_t length, const Items* items);

    static LoggerHolder logger_;

    std::shared_ptr<CInspectorMessagePimpl> pimpl_;
};

} // namespace vorlek
