#include "line_editor.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include <poll.h>
#include <unistd.h>

#include <readline/readline.h>

#include "errors_silenced.h"
#include "words.h"

namespace vptzctl {
namespace {

// What the library's hooks need; they are given nothing.
PromptInterrupt* prompt_interrupt = nullptr;
Library library_of_names;
bool line_interrupted = false;

// ---- keys ----------------------------------------------------------------------

// Holds signals off but for the moment of waiting, so that none comes between a
// look for one and the wait.
void WaitForKey(int descriptor) {
  sigset_t held;
  sigset_t before;
  sigemptyset(&held);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGWINCH}) sigaddset(&held, number);
  pthread_sigmask(SIG_BLOCK, &held, &before);
  // One may have arrived before the library's own handlers were there.
  pollfd wanted[] = {{descriptor, POLLIN, 0}, {prompt_interrupt->descriptor(), POLLIN, 0}};
  if (rl_pending_signal() == 0) ppoll(wanted, 2, nullptr, &before);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  rl_check_signals();
}

// Behind Ctrl-C each key is the end of the line, wherever it is asked for.
int NextKey(FILE* stream) {
  pollfd key = {fileno(stream), POLLIN, 0};
  while (!line_interrupted) {
    if (poll(&key, 1, 0) > 0) return rl_getc(stream);
    WaitForKey(fileno(stream));
    line_interrupted = prompt_interrupt->Take();
  }
  return '\n';
}

// ---- terminal ------------------------------------------------------------------

// The library believes that the terminal is as it wants it as long as it does not
// give it back; a signal that ends or stops the process asks for that, too.
void GiveTerminalBack() { RL_ISSTATE(RL_STATE_SIGHANDLER) ? rl_deprep_terminal() : LineTerminal::Keep(); }

// ---- completion ----------------------------------------------------------------

std::vector<std::string> texts;

char* NextText(const char*, int state) {
  static std::size_t next;
  if (state == 0) next = 0;
  return next < texts.size() ? strdup(texts[next++].c_str()) : nullptr;
}

bool NeedsQuotes(const std::string& text) { return Escaped(text) != text; }

// The words up to the cursor; one more character tells whether it stands behind a
// word or within.
std::vector<std::string> WordsBefore(int end) {
  std::vector<std::string> words =
      SplitWords(std::string(rl_line_buffer, static_cast<std::size_t>(end)) + "x").words;
  if (words.empty()) return {""};
  words.back().pop_back();
  return words;
}

char** Candidates(const char* text, int, int end) {
  const ErrorsSilenced silenced;
  const Completion completion = Complete(WordsBefore(end), library_of_names);
  if (completion.files) {
    rl_filename_quoting_desired = 1;
    return nullptr;
  }
  rl_attempted_completion_over = 1;
  texts.clear();
  for (const Candidate& candidate : completion.candidates) {
    texts.push_back(candidate.text);
    // Quotes are a matter of file names for the library.
    if (NeedsQuotes(candidate.text)) rl_filename_completion_desired = rl_filename_quoting_desired = 1;
  }
  return rl_completion_matches(text, NextText);
}

char** TryCandidates(const char* text, int start, int end) {
  try {
    return Candidates(text, start, end);
  } catch (const std::exception&) {
    rl_attempted_completion_over = 1;
    return nullptr;
  }
}

int IsEscaped(char* line, int index) {
  return index > 0 && line[index - 1] == '\\' && IsEscaped(line, index - 1) == 0 ? 1 : 0;
}

// Behind an open quote a word stays as it is.
char* QuotedWord(char* word, int, char* quote) {
  if (quote == nullptr || *quote == '\0') return strdup(Escaped(word).c_str());
  return strdup((*quote + std::string(word)).c_str());
}

char* UnquotedWord(char* word, int quote) {
  const std::string opened = quote == 0 ? word : static_cast<char>(quote) + std::string(word);
  const std::vector<std::string> words = SplitWords(opened).words;
  return strdup(words.empty() ? "" : words.front().c_str());
}

void SetUpCompletion() {
  rl_attempted_completion_function = TryCandidates;
  rl_completer_quote_characters = "'\"";
  rl_completer_word_break_characters = " \t\n";
  rl_filename_quote_characters = " \t\n\\'\"#$`;&|<>()*?~![]{}";
  rl_filename_quoting_function = QuotedWord;
  rl_filename_dequoting_function = UnquotedWord;
  rl_char_is_quoted_p = IsEscaped;
  // Questions about long lists would not end with Ctrl-C.
  rl_completion_query_items = -1;
  rl_variable_bind("page-completions", "off");
}

}  // namespace

LineEditor::LineEditor(PromptInterrupt& interrupt, Library library) {
  prompt_interrupt = &interrupt;
  library_of_names = std::move(library);
  rl_readline_name = "vptzctl";
  if (isatty(STDOUT_FILENO) == 0) rl_outstream = stderr;
  rl_initialize();
  rl_getc_function = NextKey;
  rl_deprep_term_function = GiveTerminalBack;
  SetUpCompletion();
}

LineEditor::~LineEditor() {
  rl_deprep_term_function = rl_deprep_terminal;
  rl_deprep_terminal();
  prompt_interrupt = nullptr;
  library_of_names = nullptr;
}

std::optional<std::string> LineEditor::Read(const std::string& prompt) {
  line_interrupted = false;
  LineTerminal::Resume();
  char* const typed = readline(prompt.c_str());
  if (line_interrupted) {
    std::free(typed);
    return "";
  }
  if (typed == nullptr) return std::nullopt;
  std::string line = typed;
  std::free(typed);
  return line;
}

bool LineEditor::interrupted() const { return line_interrupted; }

}  // namespace vptzctl
