// How results look for people.
#ifndef VPTZCTL_PEOPLE_H
#define VPTZCTL_PEOPLE_H

#include <string>

#include "result.h"

namespace vptzctl {

// Escape sequences, or nothing where they would disturb.
class Colours {
 public:
  explicit Colours(bool on) : on_(on) {}
  std::string Heading(const std::string& text) const { return Paint("1", text); }
  std::string Quiet(const std::string& text) const { return Paint("2", text); }
  std::string Good(const std::string& text) const { return Paint("32", text); }
  std::string Bad(const std::string& text) const { return Paint("31", text); }

 private:
  std::string Paint(const char* code, const std::string& text) const;

  bool on_;
};

// Whether a stream is a terminal that understands escape sequences.
bool IsTerminal(int descriptor);

// Colours for a stream: on such a terminal, unless $NO_COLOR is set.
Colours ColoursFor(int descriptor);

// "ptz move: camera 1, pan 30 deg"; arguments that were not given are left out.
std::string Asked(const Result& result);

// The whole result: what was asked, answers, tables.
std::string HumanText(const Result& result, const Colours& colours);

// What changes, on one line.
std::string ReadingLine(const Result& result);

// The answers on one line.
std::string EventLine(const Result& result, const Colours& colours);

// As short as possible without loss that matters to a camera: "30", "-12.5".
std::string FormatNumber(double number);

// In quotation marks inside a message. A text that is long or not plain is not
// repeated: what was asked stands in front of the message.
std::string Quoted(const std::string& text);

}  // namespace vptzctl

#endif
