// Lines as a person types them at a terminal, with history and completion.
#ifndef VPTZCTL_LINE_EDITOR_H
#define VPTZCTL_LINE_EDITOR_H

#include <optional>
#include <string>

#include "completion.h"
#include "line_terminal.h"
#include "prompt_interrupt.h"

namespace vptzctl {

// One for the process: the library behind it has one state.
class LineEditor {
 public:
  LineEditor(PromptInterrupt& interrupt, Library library);
  ~LineEditor();
  LineEditor(const LineEditor&) = delete;
  LineEditor& operator=(const LineEditor&) = delete;

  // The next line, without its end; nothing when input has ended (Ctrl-D). An
  // empty one, and interrupted() is true, after Ctrl-C.
  std::optional<std::string> Read(const std::string& prompt);
  bool interrupted() const;

 private:
  const LineTerminal terminal_;
};

}  // namespace vptzctl

#endif
