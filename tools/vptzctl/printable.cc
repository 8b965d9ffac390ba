#include "printable.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string_view>

namespace vptzctl {
namespace {

std::uint8_t ByteAt(std::string_view text, std::size_t at) { return static_cast<std::uint8_t>(text[at]); }

// By the first byte; 0 for a byte that begins no character.
std::size_t LengthOf(std::uint8_t first) {
  if (first < 0x80) return 1;
  if (first >= 0xc2 && first < 0xe0) return 2;
  if (first >= 0xe0 && first < 0xf0) return 3;
  return first >= 0xf0 && first < 0xf5 ? 4 : 0;
}

struct Character {
  char32_t number;
  std::size_t length;  // 0: the bytes are no UTF-8
};

// Overlong forms and surrogates count as no UTF-8.
bool IsWellFormed(const Character& character) {
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = character.number >= 0xd800 && character.number < 0xe000;
  return character.number >= kSmallest[character.length] && character.number < 0x110000 && !surrogate;
}

Character FirstOf(std::string_view text) {
  const std::size_t length = LengthOf(ByteAt(text, 0));
  if (length <= 1 || length > text.size()) return {ByteAt(text, 0), length == 1 ? length : 0};
  Character character = {static_cast<char32_t>(ByteAt(text, 0) & (0x7f >> length)), length};
  for (std::size_t i = 1; i < length; ++i) {
    if ((ByteAt(text, i) & 0xc0) != 0x80) return {0, 0};
    character.number = character.number << 6 | (ByteAt(text, i) & 0x3f);
  }
  return IsWellFormed(character) ? character : Character{0, 0};
}

// With those of the upper half, which some terminals obey, and the separators of
// lines and paragraphs.
bool IsControl(char32_t number) {
  return number < 0x20 || (number >= 0x7f && number < 0xa0) || number == 0x2028 || number == 0x2029;
}

bool TurnsDirection(char32_t number) {
  return number == 0x61c || number == 0x200e || number == 0x200f || (number >= 0x202a && number <= 0x202e) ||
         (number >= 0x2066 && number <= 0x2069);
}

std::string Escaped(std::string_view bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\x%02x", ByteAt(bytes, i));
    text += escape;
  }
  return text;
}

}  // namespace

std::string Printable(const std::string& text) {
  std::string clean;
  for (std::string_view rest = text; !rest.empty();) {
    const Character character = FirstOf(rest);
    const std::string_view bytes = rest.substr(0, std::max<std::size_t>(character.length, 1));
    const bool harmless =
        character.length > 0 && !IsControl(character.number) && !TurnsDirection(character.number);
    clean += harmless ? std::string(bytes) : Escaped(bytes);
    rest.remove_prefix(bytes.size());
  }
  return clean;
}

}  // namespace vptzctl
