// What may come next on a command line: for the shells' completion, and for that
// of the tool's own shell.
#ifndef VPTZCTL_COMPLETION_H
#define VPTZCTL_COMPLETION_H

#include <functional>
#include <string>
#include <vector>

#include <vptz/vptz_client.h>

#include "arguments.h"

namespace vptzctl {

struct Candidate {
  std::string text;
  std::string description;  // for people; may be empty
};

struct Completion {
  std::vector<Candidate> candidates;
  bool files = false;  // a file's path is wanted, which is the asker's to complete
};

// The client by which cameras are looked up; it is not connected. Called only
// when the database is needed.
using Library = std::function<VptzClient&()>;

// What the last of the words, which may be empty, can become. Without the
// program's name.
Completion Complete(const std::vector<std::string>& words, const Library& library);

// The words that bring a command line nearer to a command: behind nothing, or behind
// a group.
std::vector<Candidate> NextWords(const std::string& group);

// Whether the values of that argument come from the database or from a list of
// the tool's, so that only the tool can tell them.
bool ToldByTheTool(const Argument& argument);

// The hidden verb: prints a candidate a line, behind a tab its description.
// "--quoted" says that the words are as they were typed, quotes included, and are
// wanted so. Never connects, tells of no failure, and gives up where it would have
// to wait, for a lock of the database for instance. The exit code is 0.
int PrintCompletion(const std::vector<std::string>& arguments) noexcept;

}  // namespace vptzctl

#endif
