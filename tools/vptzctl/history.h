// The lines that were typed in the tool's own shell, and their file.
#ifndef VPTZCTL_HISTORY_H
#define VPTZCTL_HISTORY_H

#include <string>

namespace vptzctl {

class History {
 public:
  // Reads vptzctl/history below $XDG_STATE_HOME, else below ~/.local/state. A
  // file that cannot be read or written is done without.
  History();

  // Has the line recalled by the keys of this process.
  void Recall(const std::string& line);

  // Writes the line into the file, which only its owner can read.
  void Keep(const std::string& line);

 private:
  std::string path_;  // empty: there is no home
};

// Whether a line may be kept in a file: none that holds a user's password in an
// address, several lines, or a blank in front.
bool MayBeKept(const std::string& line);

}  // namespace vptzctl

#endif
