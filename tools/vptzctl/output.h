// Prints results. A result is described once; how it looks for people and for
// programs is decided here and nowhere else.
#ifndef VPTZCTL_OUTPUT_H
#define VPTZCTL_OUTPUT_H

#include <optional>
#include <string>
#include <vector>

#include "failures.h"
#include "value.h"

namespace vptzctl {

struct Field {
  std::string name;  // key in JSON; people see blanks for its '_'
  Value value;
  std::string unit;
  bool steady = true;  // false: may change from reading to reading
};

struct Row {
  std::string name;
  std::vector<Field> fields;  // every row of a table has the same ones
};

struct Result {
  std::string command;           // empty when the command line is wrong
  std::vector<Field> arguments;  // what was asked
  std::vector<Field> answers;    // what was learnt
  std::vector<Row> table;        // what was learnt of several things of one kind

  // Gives an argument another value than the command line.
  void SetArgument(const std::string& name, const Value& value);
};

class Output {
 public:
  explicit Output(bool json) : json_(json) {}

  // Prints a result that succeeded.
  void Show(const Result& result, int status);

  // Prints one reading of many: redraws it on a terminal, else adds a line.
  void Update(const Result& result, int status);

  // Ends what Update printed, so that the shell's prompt gets a line of its own
  // behind the terminal's echo of Ctrl-C.
  void EndUpdates();

  // Prints why there is no result: a line on standard error, and with JSON an
  // object on standard output. `status` is empty when none was received.
  void Fail(const Result& result, const Failure& failure, std::optional<int> status);

  // Prints a text of its own, such as help.
  void Print(const std::string& text);

  // False when standard output did not take everything.
  bool Complete() const { return complete_; }

 private:
  bool json_;
  bool complete_ = true;
  int lines_to_redraw_ = 0;
};

// As short as possible without loss that matters to a camera: "30", "-12.5".
std::string FormatNumber(double number);

// Without control characters, which could play tricks on a terminal.
std::string Printable(const std::string& text);

}  // namespace vptzctl

#endif
