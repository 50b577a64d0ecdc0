#include "plugin-link/MessageCommon.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>
#include <utility>

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

/// The text as it travels. Windows keeps the low byte of a character first, so the bytes are those in memory.
std::span<const BYTE> ToBytes_(const std::wstring& text) {
    return {reinterpret_cast<const BYTE*>(text.data()), text.size() * sizeof(wchar_t)};
}

/// The first delimiter from a place on, npos if there is none. A delimiter covers one of nine characters in a row, so
/// only each ninth is looked at: a long text is passed through with every message.
std::size_t FindDelimiter_(std::wstring_view text, std::size_t from) {
    constexpr std::size_t before = kDelimiter.size() - 1;
    for (std::size_t at = from + before; at < text.size(); at += kDelimiter.size()) {
        if (text[at] == L'#' || text[at] == L'@') {
            const std::size_t found = text.substr(at - before, kDelimiter.size() + before).find(kDelimiter);
            if (found != text.npos) {
                return at - before + found;
            }
        }
    }
    return text.npos;
}

/// A delimiter inside a value would end the message there, and with it the inspection: the writer of a mail could
/// switch it off. Written with a character reference it is the same value to every reader of XML.
std::wstring HideDelimiters_(std::wstring text) {
    std::size_t at = FindDelimiter_(text, 0);
    if (at == std::wstring::npos) {
        return text;
    }
    std::wstring hidden;
    std::size_t copied = 0;
    for (; at != std::wstring::npos; at = FindDelimiter_(text, at + 1)) {
        hidden.append(text, copied, at - copied).append(kHash);
        copied = at + 1;
    }
    return hidden.append(text, copied);
}

/// Everything up to a read that ends in a delimiter. The delimiter is looked for at the end of what has
/// arrived only, so the time is that of the text's length.
std::wstring ReceiveText_(const Socket& socket) {
    std::wstring text;
    std::size_t length = 0; // of the text in bytes; half a code unit at its end waits for its other half
    std::vector<BYTE> chunk;
    for (;;) {
        chunk.resize(kReceiveChunk);
        TCPCommon::Recv(socket, chunk);
        text.resize((length + chunk.size() + 1) / sizeof(wchar_t));
        std::memcpy(reinterpret_cast<BYTE*>(text.data()) + length, chunk.data(), chunk.size());
        length += chunk.size();
        if (length % sizeof(wchar_t) == 0 && text.ends_with(kDelimiter)) {
            return text;
        }
        bool ready = false;
        if (!TCPCommon::WaitForRead(socket, ready) || !ready) {
            Throw<ConnectionTerminatedException>(L"vorlek::MessageCommon::Receive", L"Connection terminated!");
        }
    }
}

/// The part of the text. The whole of it, which a single message is, goes without a copy.
std::wstring Piece_(std::wstring& text, std::size_t begin, std::size_t end) {
    if (begin != 0 || end + kDelimiter.size() != text.size()) {
        return text.substr(begin, end - begin);
    }
    text.resize(end);
    return std::exchange(text, {});
}

} // namespace

void Send(const Socket& socket, const Message& message) {
    InitLogger(logger_, __FILE__, true);
    LOG_TRACE(logger_, L"Sending to: " << socket.Get() << L", message: " << message.ToLogString());
    std::wstring text = HideDelimiters_(message.ToString());
    text += kDelimiter;
    TCPCommon::Send(socket, ToBytes_(text));
}

void Receive(const Socket& socket, std::vector<std::unique_ptr<Message>>& messages) {
    InitLogger(logger_, __FILE__, true);
    std::wstring text = ReceiveText_(socket);
    for (std::size_t begin = 0, end = 0; begin < text.size(); begin = end + kDelimiter.size()) {
        end = std::min(FindDelimiter_(text, begin), text.size());
        if (end != begin) {
            std::wstring piece = Piece_(text, begin, end);
            LOG_TRACE(logger_, L"Received from: " << socket.Get() << L", message: " << piece);
            messages.push_back(Message::FromString(std::move(piece)));
        }
    }
}

} // namespace vorlek::MessageCommon
