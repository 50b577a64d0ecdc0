#pragma once
#include <string>

#include "platform/Windows.h"

namespace link_benchmarks {

/// What the other process offers, each at a port that it publishes under this name.
constexpr wchar_t kService[] = L"QLTPluginService";   ///< answers any request with one decision, as the agent does
constexpr wchar_t kEcho[] = L"LinkBenchmarkEcho";     ///< takes a length (32 bits) and so many bytes; gives these back
constexpr wchar_t kSource[] = L"LinkBenchmarkSource"; ///< takes a length; gives a response with so many bytes of result

/// Starts the other process, which ends with this one; returns when it serves. Later calls do nothing.
void StartPeer();

/// The other process itself, until the parent ends. parent: the process ID.
void ServeAsPeer(DWORD parent);

/// What a response with so many bytes of text for its result is on the wire.
std::string ResponseBytes(std::size_t size);

} // namespace link_benchmarks
