// Prints results. A result is described once; how it looks for people and for
// programs is decided here and in people.h, and nowhere else.
#ifndef VPTZCTL_OUTPUT_H
#define VPTZCTL_OUTPUT_H

#include <optional>
#include <string>

#include "failures.h"
#include "result.h"

namespace vptzctl {

class Output {
 public:
  explicit Output(bool json) : json_(json) {}

  // Prints a result that succeeded.
  void Show(const Result& result, int status);

  // Prints one reading of many: redraws it on a terminal, else adds a line.
  void Update(const Result& result, int status);

  // Prints one of several things as they come, each on a line of its own.
  void Event(const Result& result);

  // Tells on a terminal what goes on, on a line that the next print replaces.
  void Progress(const std::string& text);

  // Ends what Update printed, so that the shell's prompt gets a line of its own
  // behind the terminal's echo of Ctrl-C.
  void EndUpdates();

  // Prints why there is no result: a line on standard error, and with JSON an
  // object on standard output. `status` is empty when none was received.
  void Fail(const Result& result, const Failure& failure, std::optional<int> status);

  // Tells people something beside the result, on standard error.
  void Note(const std::string& text);

  // Prints a text of its own, such as help.
  void Print(const std::string& text);

  // False when standard output did not take everything.
  bool Complete() const { return complete_; }

 private:
  bool json_;
  bool complete_ = true;
  bool progress_shown_ = false;
  int lines_to_redraw_ = 0;
};

}  // namespace vptzctl

#endif
