#include "line.h"

#include <array>
#include <cstdio>

#include "settings.h"

namespace zerk {
namespace {

constexpr unsigned char kDelete = 0x7f;

bool IsControl(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return (byte < 0x20 && byte != '\t') || byte == kDelete;
}

void AppendEscaped(std::string& line, char character) {
  switch (character) {
    case '\n':
      line += "\\n";
      return;
    case '\r':
      line += "\\r";
      return;
    default:
      break;
  }
  static constexpr char kDigits[] = "0123456789abcdef";
  const auto byte = static_cast<unsigned char>(character);
  line += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xf]};
}

void AppendText(std::string& line, const std::string& text) {
  for (const char character : text) {
    if (IsControl(character)) {
      AppendEscaped(line, character);
    } else {
      line += character;
    }
  }
}

std::string TextOrDash(const char* text) { return text != nullptr && *text != '\0' ? text : "-"; }

}  // namespace

std::string Message(const char* format, std::va_list arguments) {
  if (format == nullptr) {
    return {};
  }
  std::array<char, 512> usual;
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(usual.data(), usual.size(), format, arguments);
  std::string message;
  if (length < 0) {
    message = std::string("(cannot be formatted) ") + format;
  } else if (static_cast<std::size_t>(length) < usual.size()) {
    message.assign(usual.data(), static_cast<std::size_t>(length));
  } else {
    message.resize(static_cast<std::size_t>(length));
    std::vsnprintf(message.data(), message.size() + 1, format, again);
  }
  va_end(again);
  return message;
}

std::string Line(int level, const Origin& origin, const std::string& message) {
  std::string line;
  line.reserve(message.size() + 128);
  line += LevelName(level);
  line += ' ';
  line += std::to_string(origin.module);
  line += ' ';
  AppendText(line, TextOrDash(origin.file));
  line += ':';
  line += std::to_string(origin.line);
  line += ' ';
  AppendText(line, TextOrDash(origin.function));
  line += ": ";
  AppendText(line, message);
  return line;
}

}  // namespace zerk
