#include <string>
#include <vector>

#include "benchmarks/link/Peer.h"
#include "benchmarks/link/RawSocket.h"
#include "benchmarks/support/Row.h"
#include "plugin-link/ConnectionManager.h"
#include "plugin-link/Message.h"
#include "plugin-link/ServicePort.h"

namespace {

using namespace link_benchmarks;
using benchmark_support::Row;

constexpr std::size_t kKilo = 1 << 10;
constexpr std::size_t kMega = 1 << 20;

/// An inspector document of about so many characters.
template <std::size_t Size>
const std::wstring& Document_() {
    static const std::wstring document = [] {
        std::wstring text = L"<inspectorMessage><context name=\"EmailBody\">";
        while (text.size() < Size) {
            text += L"Please find the figures for Z\x00FCrich attached; they are for internal use. ";
        }
        return text + L"</context></inspectorMessage>";
    }();
    return document;
}

/// What an exchange with that document sends.
template <std::size_t Size>
const std::string& Request_() {
    static const std::string bytes = [] {
        vorlek::Message request(vorlek::MessageType::Request);
        request.Set(L"Plugin", L"DataControlPlugin", false);
        request.Set(L"Method", L"Inspect", false);
        request.Set(L"Param", Document_<Size>(), false);
        const std::wstring text = request.ToString() + L"###@@@###";
        return std::string(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
    }();
    return bytes;
}

template <std::size_t Size>
void Exchange_(benchmark::State& state) {
    StartPeer();
    const std::wstring& document = Document_<Size>();
    const vorlek::PluginUtils::CConnectionManager manager;
    for (auto turn : state) {
        // The add-in hands its document over; the copy that is made here is none of its.
        state.PauseTiming();
        std::wstring param = document;
        state.ResumeTiming();
        benchmark::DoNotOptimize(manager.Inspect(std::move(param)));
    }
}

template <std::size_t Size>
void RawEcho_(benchmark::State& state) {
    StartPeer();
    const std::string& request = Request_<Size>();
    const std::uint16_t port = vorlek::ServicePort::Read(kEcho);
    std::string answer(request.size(), '\0');
    for (auto turn : state) {
        const SOCKET connection = Connect(port);
        SendLength(connection, request.size());
        SendAll(connection, request);
        const bool received = ReceiveAll(connection, answer.data(), answer.size());
        closesocket(connection);
        if (!received) {
            return state.SkipWithError("the peer closed the connection");
        }
    }
}

const Row kilo1("Inspect with 1 KB / raw echo", "", Exchange_<kKilo>, RawEcho_<kKilo>);
const Row kilo10("Inspect with 10 KB / raw echo", "at most 1.5", Exchange_<10 * kKilo>, RawEcho_<10 * kKilo>);
const Row kilo100("Inspect with 100 KB / raw echo", "", Exchange_<100 * kKilo>, RawEcho_<100 * kKilo>);
const Row mega1("Inspect with 1 MB / raw echo", "", Exchange_<kMega>, RawEcho_<kMega>);
const Row mega10("Inspect with 10 MB / raw echo", "at most 2.5", Exchange_<10 * kMega>, RawEcho_<10 * kMega>);
const Row mega100("Inspect with 100 MB / raw echo", "", Exchange_<100 * kMega>, RawEcho_<100 * kMega>);
const Row growth("Inspect with 100 MB / with 10 MB", "at most 12", Exchange_<100 * kMega>, Exchange_<10 * kMega>);

} // namespace
