#include "plugin-link/MessageCommon.h"

#include <cstring>
#include <string_view>

#include "foundation/Log.h"
#include "foundation/Log4CxxHelper.h"
#include "foundation/Throw.h"
#include "plugin-link/Exceptions.h"
#include "plugin-link/TCPCommon.h"

namespace vorlek::MessageCommon {
namespace {

constexpr std::wstring_view kDelimiter = L"###@@@###";
constexpr std::wstring_view kHash = L"&#35;";
constexpr std::size_t kReceiveChunk = 4096;

LoggerHolder logger_;

std::vector<BYTE> ToBytes_(std::wstring_view text) {
    std::vector<BYTE> bytes(text.size() * sizeof(wchar_t));
    std::memcpy(bytes.data(), text.data(), bytes.size());
    return bytes;
}

/// A delimiter inside a value would end the message there, and with it the inspection: the writer of a mail could
/// switch it off. Written with a character reference it is the same value to every reader of XML.
std::wstring HideDelimiters_(std::wstring text) {
    std::size_t at = text.find(kDelimiter);
    if (at == std::wstring::npos) {
        return text;
    }
    std::wstring hidden;
    std::size_t copied = 0;
    for (; at != std::wstring::npos; at = text.find(kDelimiter, at + 1)) {
        hidden.append(text, copied, at - copied).append(kHash);
        copied = at + 1;
    }
    return hidden.append(text, copied);
}

void Append_(std::wstring& text, const std::vector<BYTE>& bytes) {
    const std::size_t length = text.size();
    text.resize(length + bytes.size() / sizeof(wchar_t));
    std::memcpy(text.data() + length, bytes.data(), bytes.size());
}

/// Everything up to a read that ends in a delimiter. The delimiter is looked for at the end of what has
/// arrived only, so the time is that of the text's length.
std::wstring ReceiveText_(const Socket& socket) {
    std::wstring text;
    std::vector<BYTE> accumulator;
    std::vector<BYTE> chunk;
    for (;;) {
        chunk.resize(kReceiveChunk);
        TCPCommon::Recv(socket, chunk);
        accumulator.insert(accumulator.end(), chunk.begin(), chunk.end());
        // Half a code unit waits for its other half.
        if (accumulator.size() % sizeof(wchar_t) == 0) {
            Append_(text, accumulator);
            accumulator.clear();
            if (text.ends_with(kDelimiter)) {
                return text;
            }
        }
        bool ready = false;
        if (!TCPCommon::WaitForRead(socket, ready) || !ready) {
            Throw<ConnectionTerminatedException>(L"vorlek::MessageCommon::Receive", L"Connection terminated!");
        }
    }
}

} // namespace

void Send(const Socket& socket, const Message& message) {
    InitLogger(logger_, __FILE__, true);
    LOG_TRACE(logger_, L"Sending to: " << socket.Get() << L", message: " << message.ToLogString());
    TCPCommon::Send(socket, ToBytes_(HideDelimiters_(message.ToString()).append(kDelimiter)));
}

void Receive(const Socket& socket, std::vector<std::unique_ptr<Message>>& messages) {
    InitLogger(logger_, __FILE__, true);
    const std::wstring text = ReceiveText_(socket);
    std::size_t begin = 0;
    for (std::size_t end; (end = text.find(kDelimiter, begin)) != std::wstring::npos; begin = end + kDelimiter.size()) {
        if (end == begin) {
            continue;
        }
        std::wstring piece = text.substr(begin, end - begin);
        LOG_TRACE(logger_, L"Received from: " << socket.Get() << L", message: " << piece);
        messages.push_back(Message::FromString(std::move(piece)));
    }
}

} // namespace vorlek::MessageCommon
