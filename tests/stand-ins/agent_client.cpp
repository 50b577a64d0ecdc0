#include "tests/stand-ins/agent_client.h"

#include <array>
#include <filesystem>
#include <stdexcept>

#include "stand-ins/agent/Message.h"
#include "stand-ins/agent/Text.h"

namespace agent_tests {

namespace agent = stand_ins::agent;

std::uint16_t PublishedPortOf(const std::wstring& service) {
    const std::wstring name = L"Global\\59EB6F8B-7F42-4CB9-B741-ED434F426458_" + service;
    const HANDLE section = OpenFileMappingW(FILE_MAP_READ, FALSE, name.c_str());
    if (section == nullptr) {
        return 0;
    }
    const auto* view = static_cast<const unsigned char*>(MapViewOfFile(section, FILE_MAP_READ, 0, 0, 2));
    const auto port = static_cast<std::uint16_t>(view == nullptr ? 0 : view[0] | view[1] << 8);
    UnmapViewOfFile(view);
    CloseHandle(section);
    return port;
}

std::wstring Reply::Text() const {
    const std::wstring text = agent::FromWire(bytes);
    return text.ends_with(agent::kDelimiter) ? text.substr(0, text.size() - agent::kDelimiter.size()) : text;
}

Client::Client(std::uint16_t port) {
    WSADATA data;
    WSAStartup(MAKEWORD(2, 2), &data);
    socket_ = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    isConnected_ = connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

Client::~Client() {
    closesocket(socket_);
    WSACleanup();
}

void Client::Send(std::string_view bytes) {
    if (send(socket_, bytes.data(), static_cast<int>(bytes.size()), 0) != static_cast<int>(bytes.size())) {
        throw std::runtime_error("send failed with: " + std::to_string(WSAGetLastError()));
    }
}

Reply Client::Read(std::size_t enough) {
    Reply reply;
    std::array<char, 4096> buffer;
    while (reply.bytes.size() < enough) {
        const int count = recv(socket_, buffer.data(), static_cast<int>(buffer.size()), 0);
        if (count <= 0) {
            // Under load Wine may report a reset as an end. Only after a true end the own side is still open.
            reply.end = count == 0 && send(socket_, "", 1, 0) == 1 ? End::Closed : End::Reset;
            return reply;
        }
        reply.sizes.push_back(static_cast<std::size_t>(count));
        reply.bytes.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return reply;
}

bool Client::IsReadable(std::uint32_t milliseconds) const {
    fd_set set;
    FD_ZERO(&set);
    set.fd_count = 1;
    set.fd_array[0] = socket_;
    timeval limit{static_cast<long>(milliseconds / 1000), static_cast<long>(milliseconds % 1000 * 1000)};
    return select(0, &set, nullptr, nullptr, &limit) == 1;
}

void Client::Reset() {
    const linger abortive{1, 0};
    setsockopt(socket_, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&abortive), sizeof abortive);
    closesocket(socket_);
    socket_ = INVALID_SOCKET;
}

Reply Exchange(std::uint16_t port, std::string_view bytes) {
    Client client(port);
    if (!client.IsConnected()) {
        return {{}, End::Refused, {}};
    }
    client.Send(bytes);
    return client.Read();
}

std::string CallBytes(const std::wstring& plugin, const std::wstring& method, const std::wstring& param) {
    const auto key = [](const wchar_t* name, const std::wstring& value) {
        return std::wstring(L"<Key name=\"") + name + L"\" type=\"string\" size=\"" +
               std::to_wstring(value.size() * 2) + L"\" hidden=\"0\">" + agent::Escape(value) + L"</Key>";
    };
    return agent::ToWire(
        L"<?xml version=\"1.0\" encoding=\"utf-16\"?>\r\n<Msg version=\"1\" type=\"Request\" pid=\"77\">" +
        key(L"Method", method) + key(L"Param", param) + key(L"Plugin", plugin) + L"</Msg>###@@@###");
}

std::wstring Call(std::uint16_t port, const std::wstring& plugin, const std::wstring& method,
                  const std::wstring& param) {
    const auto message = agent::WireMessage::FromText(Exchange(port, CallBytes(plugin, method, param)).Text());
    std::wstring answer = message.type;
    for (const auto& [name, entry] : message.entries) {
        answer += L" " + entry.tag + L": " + entry.value;
    }
    return answer;
}

std::wstring MailDocument(const std::wstring& subject, const std::wstring& body, const std::wstring& bodyFile,
                          const std::wstring& attachmentPath, const std::wstring& attachmentName) {
    const std::wstring subjectText = agent::Escape(subject);
    std::wstring document =
        L"<?xml version=\"1.0\" ?><inspectorMessage version=\"1\" channel=\"Email\"><context>"
        L"<item name=\"EmailSubject\" value=\"" +
        subjectText +
        L"\" /><item name=\"EmailFrom\" value=\"ada@example.com\" />"
        L"<item name=\"EmailTo\" value=\"bob@example.org\" /><item name=\"IncidentDestination\" "
        L"value=\"bob@example.org\" />"
        L"<item name=\"EmailBody\" value=\"" +
        agent::Escape(bodyFile) +
        L"\" /></context>"
        L"<dataItem><contextItem name=\"ItemType\" value=\"EmailSubject\" /><textFormat>clearText</textFormat>"
        L"<dataEncoding>text</dataEncoding><data>" +
        subjectText +
        L"</data></dataItem>"
        L"<dataItem><contextItem name=\"ItemType\" value=\"EmailBody\" /><textFormat>clearText</textFormat>"
        L"<dataEncoding>text</dataEncoding><data>" +
        agent::Escape(body) + L"</data></dataItem>";
    if (!attachmentPath.empty()) {
        document += L"<dataItem><contextItem name=\"DataLocation\" value=\"" + agent::Escape(attachmentName) +
                    L"\" /><dataEncoding>filePath</dataEncoding><data>" + agent::Escape(attachmentPath) +
                    L"</data></dataItem>";
    }
    return document + L"</inspectorMessage>";
}

std::wstring OwnService() {
    return L"AgentTest-" + agent::NewGuid();
}

OwnFolder::OwnFolder() : path_((std::filesystem::temp_directory_path() / agent::NewGuid()).wstring()) {
    agent::MakeFolder(path_);
}

OwnFolder::~OwnFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::wstring OwnFolder::Write(const std::wstring& name, std::string_view bytes) const {
    std::wstring path = path_ + L"\\" + name;
    agent::WriteWholeFile(path, bytes);
    return path;
}

std::size_t OwnFolder::Count() const {
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path_)) {
        count += entry.is_regular_file() ? 1 : 0;
    }
    return count;
}

} // namespace agent_tests
