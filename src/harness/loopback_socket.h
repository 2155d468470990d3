#pragma once

#include "platform/descriptor.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace orvanta {

// TCP on 127.0.0.1 and nowhere else, as the receiver uses it. Nothing here blocks.

/// A socket that listens on `port` of 127.0.0.1, or on any free port for 0; empty if it cannot be had.
[[nodiscard]] Descriptor listenOnLoopback(std::uint16_t port);

/// The port that a listening socket has.
[[nodiscard]] std::uint16_t portOf(const Descriptor& listener);

enum class AcceptOutcome : std::uint8_t { accepted, nobodyWaits, noDescriptors };

/// Takes the next connection that waits into `connection`.
[[nodiscard]] AcceptOutcome acceptConnection(const Descriptor& listener, Descriptor& connection);

enum class ReceiveOutcome : std::uint8_t { received, nothingYet, ended };

/// Reads what has come, at most `room` bytes, and sets `count`.
[[nodiscard]] ReceiveOutcome receiveSome(const Descriptor& connection, std::span<char> room, std::size_t& count);

/// Sends a text that is far smaller than any socket's buffer, as the last thing that is said.
void sendLast(const Descriptor& connection, std::string_view text);

/// Two connected ends: a byte that is written to the second wakes whoever polls the first.
[[nodiscard]] bool makeWakePipe(Descriptor& wakes, Descriptor& wakeUp);

} // namespace orvanta
