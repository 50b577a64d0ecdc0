#include "stand-ins/agent/Delivery.h"

#include <algorithm>
#include <iterator>

#include "stand-ins/agent/Connection.h"
#include "stand-ins/agent/Quantity.h"

namespace stand_ins::agent {
namespace {

/// Long enough for a client to read what has come before the next piece comes.
constexpr std::uint32_t kMoment = 15;

/// Where the piece ends that begins at the place.
std::size_t PieceEnd_(const Delivery& delivery, const std::vector<std::size_t>& splits, std::size_t at,
                      std::size_t size) {
    const std::size_t piece = delivery.piece == 0 ? size : delivery.piece;
    const auto split = std::ranges::upper_bound(splits, at);
    return std::min({size, at + piece, split == splits.end() ? size : *split});
}

/// `whole`: the size of the answer, of which these bytes are the beginning.
std::size_t SendInPieces_(Connection& connection, std::string_view bytes, const Delivery& delivery, std::size_t whole) {
    std::vector<std::size_t> splits;
    std::ranges::transform(delivery.splits, std::back_inserter(splits),
                           [whole](const Position& split) { return split.In(whole); });
    std::ranges::sort(splits);
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const std::size_t end = PieceEnd_(delivery, splits, sent, bytes.size());
        const std::size_t wanted = end - sent;
        const std::size_t count = connection.Send(bytes.substr(sent, wanted));
        sent += count;
        const bool isSplit = std::ranges::binary_search(splits, sent);
        if (count < wanted || (sent < bytes.size() && !connection.Pause(isSplit ? kMoment : delivery.gap))) {
            break;
        }
    }
    return sent;
}

} // namespace

std::optional<Position> Position::FromText(std::wstring_view text) {
    Position position;
    if (text.starts_with(L'-')) {
        position.unit = Unit::FromEnd;
        text.remove_prefix(1);
    } else if (text.ends_with(L'%')) {
        position.unit = Unit::Percent;
        text.remove_suffix(1);
    }
    const auto number = ReadNumber(text);
    if (!number || (position.unit == Unit::Percent && *number > 100)) {
        return std::nullopt;
    }
    position.value = *number;
    return position;
}

std::size_t Position::In(std::size_t size) const {
    const std::size_t place = unit == Unit::FromStart ? value
                              : unit == Unit::FromEnd ? size - std::min(value, size)
                                                      : size * value / 100;
    return std::min(isOdd ? place | 1 : place, size);
}

std::size_t Deliver(Connection& connection, std::string_view bytes, const Delivery& delivery) {
    if (!connection.Pause(delivery.delay)) {
        return 0;
    }
    const std::string_view wanted = bytes.substr(0, delivery.stop ? delivery.stop->In(bytes.size()) : bytes.size());
    const std::size_t sent = SendInPieces_(connection, wanted, delivery, bytes.size());
    switch (delivery.end.value_or(Delivery::End::Close)) {
    case Delivery::End::Close:
        connection.Finish();
        return sent;
    case Delivery::End::Silence:
        connection.AwaitEnd();
        return sent;
    case Delivery::End::Death:
        return sent;
    case Delivery::End::Reset:
        break;
    }
    connection.Reset();
    return 0;
}

} // namespace stand_ins::agent
