// Command lines that no shell has split.
#ifndef VPTZCTL_WORDS_H
#define VPTZCTL_WORDS_H

#include <string>
#include <vector>

namespace vptzctl {

struct SplitLine {
  std::vector<std::string> words;
  bool complete = true;  // false: a quote is open, or the end is a backslash
};

// The words as a shell reads them: blanks separate, '...' and "..." and \ keep
// characters as they are, # begins a comment. Nothing is expanded. An incomplete
// line's last word is what there is of it; text that ends behind a blank has no
// empty last word.
SplitLine SplitWords(const std::string& text);

// A word so that SplitWords, and a shell, reads it back.
std::string Escaped(const std::string& word);

}  // namespace vptzctl

#endif
