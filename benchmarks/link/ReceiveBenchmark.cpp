#include <memory>
#include <vector>

#include "benchmarks/link/Peer.h"
#include "benchmarks/link/RawSocket.h"
#include "benchmarks/support/Row.h"
#include "plugin-link/Message.h"
#include "plugin-link/MessageCommon.h"
#include "plugin-link/ServicePort.h"
#include "plugin-link/Socket.h"

namespace {

using namespace link_benchmarks;
using benchmark_support::Row;

constexpr std::size_t kMega = 1 << 20;

template <std::size_t Size>
void Receive_(benchmark::State& state) {
    StartPeer();
    const vorlek::Socket connection(Connect(vorlek::ServicePort::Read(kSource)));
    for (auto turn : state) {
        SendLength(connection.Get(), Size);
        std::vector<std::unique_ptr<vorlek::Message>> messages;
        vorlek::MessageCommon::Receive(connection, messages);
        if (messages.size() != 1 || messages.front()->GetValueSize(L"Result") != Size) {
            return state.SkipWithError("what arrives is not what was sent");
        }
    }
}

template <std::size_t Size>
void RawReceive_(benchmark::State& state) {
    StartPeer();
    const vorlek::Socket connection(Connect(vorlek::ServicePort::Read(kSource)));
    std::string bytes(ResponseBytes(Size).size(), '\0');
    for (auto turn : state) {
        SendLength(connection.Get(), Size);
        if (!ReceiveAll(connection.Get(), bytes.data(), bytes.size())) {
            return state.SkipWithError("the peer closed the connection");
        }
    }
}

const Row mega10("receive 10 MB / the same bytes", "", Receive_<10 * kMega>, RawReceive_<10 * kMega>);
const Row mega100("receive 100 MB / the same bytes", "", Receive_<100 * kMega>, RawReceive_<100 * kMega>);
const Row growth("receive 100 MB / 10 MB", "at most 12", Receive_<100 * kMega>, Receive_<10 * kMega>);

} // namespace
