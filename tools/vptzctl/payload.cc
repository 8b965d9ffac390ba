#include "payload.h"

#include <algorithm>
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

// One field of a message; which of the values it has the wire type tells.
struct RawField {
  std::uint64_t key = 0;
  std::uint64_t number = 0;
  std::string_view text;

  bool Is(std::uint32_t field, WireType type) const { return key == (std::uint64_t{field} << 3 | type); }
};

bool CutText(std::string_view* bytes, RawField* field) {
  if (!CutVarint(bytes, &field->number)) return false;
  field->text =
      bytes->substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(field->number, bytes->size())));
  return Skip(bytes, field->number);
}

bool CutValue(std::string_view* bytes, RawField* field) {
  switch (field->key & 7) {
    case kVarint:
      return CutVarint(bytes, &field->number);
    case kEightBytes:
      return Skip(bytes, 8);
    case kCounted:
      return CutText(bytes, field);
    case kFourBytes:
      return Skip(bytes, 4);
    default:
      return false;
  }
}

bool CutField(std::string_view* bytes, RawField* field) {
  if (!CutVarint(bytes, &field->key) || field->key > std::numeric_limits<std::uint32_t>::max()) return false;
  return field->key >> 3 != 0 && CutValue(bytes, field);
}

// The last such field; none also when the bytes are no message.
std::optional<RawField> LastField(std::string_view message, std::uint32_t wanted, WireType type) {
  std::optional<RawField> found;
  while (!message.empty()) {
    RawField field;
    if (!CutField(&message, &field)) return std::nullopt;
    if (field.Is(wanted, type)) found = field;
  }
  return found;
}

}  // namespace

std::optional<std::uint64_t> NumberIn(std::string_view message, std::uint32_t field) {
  const std::optional<RawField> found = LastField(message, field, kVarint);
  return found ? std::optional<std::uint64_t>(found->number) : std::nullopt;
}

std::optional<std::string> TextIn(std::string_view message, std::uint32_t field) {
  const std::optional<RawField> found = LastField(message, field, kCounted);
  return found ? std::optional<std::string>(found->text) : std::nullopt;
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
