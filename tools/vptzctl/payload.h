// What the payload of a signal means.
#ifndef VPTZCTL_PAYLOAD_H
#define VPTZCTL_PAYLOAD_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vptzctl {

// The number that a serialized message holds in a field; the last one when it
// holds several. None when it holds none, or when the bytes are no message from
// the first to the last.
std::optional<std::uint64_t> NumberIn(std::string_view message, std::uint32_t field);

// The same for a text.
std::optional<std::string> TextIn(std::string_view message, std::uint32_t field);

// How a search ended: the number of cameras found, or a negative refusal. None
// when the signal does not tell.
std::optional<int> SearchOutcome(const std::string& payload);

// The device whose rows have changed. None when the signal means any of them.
std::optional<std::uint32_t> ChangedDevice(const std::string& payload);

}  // namespace vptzctl

#endif
