#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Windows.h"

namespace agent_tests {

/// The port in a service's section, as a client finds it; 0 if there is no section.
std::uint16_t PublishedPortOf(const std::wstring& service);

/// How an exchange ended.
enum class End { Closed, Reset, Refused };

/// What came back on one connection.
struct Reply {
    std::string bytes; ///< all of them
    End end = End::Closed;
    std::vector<std::size_t> sizes; ///< of what each read brought

    /// The text without the delimiter.
    std::wstring Text() const;
};

/// A connection made by nothing but Winsock.
class Client {
public:
    explicit Client(std::uint16_t port);
    ~Client();
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    bool IsConnected() const { return isConnected_; }
    void Send(std::string_view bytes);
    /// Reads until the other side ends, or at least so many bytes have come.
    Reply Read(std::size_t enough = static_cast<std::size_t>(-1));
    /// Whether something, an end included, comes within the time.
    bool IsReadable(std::uint32_t milliseconds = 0) const;
    /// Breaks the connection.
    void Reset();

private:
    SOCKET socket_;
    bool isConnected_;
};

/// A whole exchange: connect, send, read to the end.
Reply Exchange(std::uint16_t port, std::string_view bytes);

/// The bytes of a call, as the format has them.
std::string CallBytes(const std::wstring& plugin, const std::wstring& method, const std::wstring& param);

/// The call's answer: the value of its "Result" or "Error", with the type and the tag before it, as
/// "Response string: ...".
std::wstring Call(std::uint16_t port, const std::wstring& plugin, const std::wstring& method,
                  const std::wstring& param);

/// An inspector document of a mail with these parts.
std::wstring MailDocument(const std::wstring& subject, const std::wstring& body, const std::wstring& bodyFile = {},
                          const std::wstring& attachmentPath = {}, const std::wstring& attachmentName = {});

/// A service name that no other test uses.
std::wstring OwnService();

/// A folder of the test's own, removed with all in it at the end.
class OwnFolder {
public:
    OwnFolder();
    ~OwnFolder();
    OwnFolder(const OwnFolder&) = delete;
    OwnFolder& operator=(const OwnFolder&) = delete;

    const std::wstring& Path() const { return path_; }
    std::wstring Write(const std::wstring& name, std::string_view bytes) const;
    /// How many files there are in it and its folders.
    std::size_t Count() const;

private:
    std::wstring path_;
};

} // namespace agent_tests
