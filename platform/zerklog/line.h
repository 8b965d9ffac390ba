// The text of one line, without its time.
#ifndef ZERKLOG_LINE_H
#define ZERKLOG_LINE_H

#include <cstdarg>
#include <string>

namespace zerk {

// Where a line comes from.
struct Origin {
  int module;
  const char* file;  // null when unknown
  int line;
  const char* function;  // null when unknown
};

// The message that `format` and `arguments` make; null makes an empty one. A
// message that printf can't make is replaced by its format.
std::string Message(const char* format, std::va_list arguments);

// "LEVEL MODULE FILE:LINE FUNCTION: MESSAGE", with control characters escaped,
// so that no text can pass for a line of its own.
std::string Line(int level, const Origin& origin, const std::string& message);

}  // namespace zerk

#endif
