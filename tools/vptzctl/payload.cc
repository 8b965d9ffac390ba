#include "payload.h"

#include <limits>

namespace vptzctl {
namespace {

// Fields of the service's messages: the status of an answer, the device of a
// command.
constexpr std::uint32_t kStatusCode = 1;
constexpr std::uint32_t kDeviceId = 9;

enum WireType : std::uint32_t { kVarint = 0, kEightBytes = 1, kCounted = 2, kFourBytes = 5 };

// Seven bits a byte, the lowest first; the highest bit tells that more follow.
bool CutVarint(std::string_view* bytes, std::uint64_t* number) {
  *number = 0;
  for (unsigned shift = 0; shift < 64 && !bytes->empty(); shift += 7) {
    const auto byte = static_cast<unsigned char>(bytes->front());
    bytes->remove_prefix(1);
    if (shift == 63 && byte > 1) return false;  // more than 64 bits
    *number |= static_cast<std::uint64_t>(byte & 0x7f) << shift;
    if ((byte & 0x80) == 0) return true;
  }
  return false;
}

bool Skip(std::string_view* bytes, std::uint64_t count) {
  if (count > bytes->size()) return false;
  bytes->remove_prefix(static_cast<std::size_t>(count));
  return true;
}

// Takes a field's value off the bytes; only varints are kept.
bool CutValue(std::string_view* bytes, std::uint32_t wire_type, std::uint64_t* number) {
  switch (wire_type) {
    case kVarint:
      return CutVarint(bytes, number);
    case kEightBytes:
      return Skip(bytes, 8);
    case kCounted:
      return CutVarint(bytes, number) && Skip(bytes, *number);
    case kFourBytes:
      return Skip(bytes, 4);
    default:
      return false;
  }
}

}  // namespace

std::optional<std::uint64_t> NumberIn(std::string_view message, std::uint32_t field) {
  constexpr unsigned kTypeBits = 3;
  std::optional<std::uint64_t> found;
  while (!message.empty()) {
    std::uint64_t key = 0;
    std::uint64_t number = 0;
    if (!CutVarint(&message, &key) || key > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
    const auto wire_type = static_cast<std::uint32_t>(key & 7);
    if (key >> kTypeBits == 0 || !CutValue(&message, wire_type, &number)) return std::nullopt;
    if (key >> kTypeBits == field && wire_type == kVarint) found = number;
  }
  return found;
}

std::optional<int> SearchOutcome(const std::string& payload) {
  const std::optional<std::uint64_t> status = NumberIn(payload, kStatusCode);
  if (!status) return std::nullopt;
  return static_cast<int>(static_cast<std::uint32_t>(*status));
}

std::optional<std::uint32_t> ChangedDevice(const std::string& payload) {
  const std::optional<std::uint64_t> device = NumberIn(payload, kDeviceId);
  if (!device || *device == 0 || *device > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
  return static_cast<std::uint32_t>(*device);
}

}  // namespace vptzctl
