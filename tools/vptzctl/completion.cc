#include "completion.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <optional>

#include <sys/time.h>
#include <unistd.h>

#include "command.h"
#include "errors_silenced.h"
#include "known_values.h"
#include "printable.h"
#include "usage.h"
#include "words.h"

namespace vptzctl {
namespace {

// ---- reading what is there -----------------------------------------------------

// Reads the words from the left, as far as they are understood.
class Reader {
 public:
  LineSoFar Read(const std::vector<std::string>& words) {
    for (std::size_t i = 0; i + 1 < words.size(); ++i) Take(words[i]);
    line_.typed = words.empty() ? "" : words.back();
    const bool option = !only_arguments_ && line_.typed.rfind('-', 0) == 0;
    line_.wanted = valued_ != nullptr || option ? valued_ : Next();
    return line_;
  }

  const std::string& name() const { return name_; }  // of the command or the group
  bool TakesOptions() const { return !only_arguments_; }

 private:
  void Take(const std::string& word) {
    if (valued_ != nullptr) {
      line_.given[valued_->name] = word;
      valued_ = nullptr;
    } else if (word == "--") {
      only_arguments_ = true;
    } else if (word.rfind('-', 0) == 0 && !only_arguments_) {
      TakeOption(word);
    } else if (line_.command == nullptr) {
      TakeCommand(word);
    } else {
      TakeArgument(word);
    }
  }

  void TakeOption(const std::string& word) {
    const std::size_t equals = word.find('=');
    const Argument* option = Find(word.substr(0, equals));
    if (option == nullptr || option->kind == Kind::kFlag) return;
    if (equals == std::string::npos) {
      valued_ = option;
    } else {
      line_.given[option->name] = word.substr(equals + 1);
    }
  }

  void TakeCommand(const std::string& word) {
    name_ += (name_.empty() ? "" : " ") + word;
    for (const Command& command : Commands()) {
      if (command.Name() == name_) line_.command = &command;
    }
  }

  void TakeArgument(const std::string& word) {
    if (const Argument* argument = Next()) line_.given[argument->name] = word;
    ++place_;
  }

  const Argument* Find(const std::string& option) const {
    const auto in = [&](const std::vector<Argument>& arguments) -> const Argument* {
      const auto found = std::find_if(arguments.begin(), arguments.end(),
                                      [&](const Argument& argument) { return argument.name == option; });
      return found == arguments.end() ? nullptr : &*found;
    };
    const Argument* own = line_.command == nullptr ? nullptr : in(line_.command->arguments);
    return own != nullptr ? own : in(GlobalArguments());
  }

  // The argument that is told by its place and comes next.
  const Argument* Next() const {
    if (line_.command == nullptr) return nullptr;
    int place = 0;
    for (const Argument& argument : line_.command->arguments) {
      if (!argument.IsOption() && (place++ == place_ || argument.kind == Kind::kTexts)) return &argument;
    }
    return nullptr;
  }

  LineSoFar line_;
  std::string name_;
  const Argument* valued_ = nullptr;  // the option before, which takes a value
  bool only_arguments_ = false;
  int place_ = 0;
};

// ---- candidates ----------------------------------------------------------------

std::vector<Candidate> Options(const Command* command) {
  std::vector<Candidate> options;
  const auto add = [&](const std::vector<Argument>& arguments) {
    for (const Argument& argument : arguments) {
      if (argument.IsOption()) options.push_back({argument.name, argument.help});
    }
  };
  if (command != nullptr) add(command->arguments);
  add(GlobalArguments());
  options.push_back({"--help", "print help"});
  return options;
}

std::vector<Candidate> ValuesOf(const LineSoFar& line, const Library& library) {
  if (ToldByTheTool(*line.wanted)) return KnownValues(line, library);
  std::vector<Candidate> values;
  for (const std::string& text : FixedValues(*line.wanted)) values.push_back({text, ""});
  return values;
}

// "help" takes the words of a command.
bool WantsCommand(const LineSoFar& line) {
  return line.wanted != nullptr && line.wanted->name == kCommandWords;
}

std::vector<Candidate> Candidates(const Reader& reader, const LineSoFar& line, const Library& library) {
  if (WantsCommand(line)) {
    const auto given = line.given.find(kCommandWords);
    return NextWords(given == line.given.end() ? "" : given->second);
  }
  if (line.wanted != nullptr) return ValuesOf(line, library);
  if (reader.TakesOptions() && line.typed.rfind('-', 0) == 0) return Options(line.command);
  return line.command == nullptr ? NextWords(reader.name()) : std::vector<Candidate>();
}

// What would play tricks on a terminal, or be two lines, is not offered.
bool CanBeOffered(const std::string& text) { return !text.empty() && Printable(text) == text; }

// ---- the verb ------------------------------------------------------------------

constexpr std::chrono::milliseconds kPatience(80);
constexpr std::chrono::milliseconds kLook(10);

std::chrono::nanoseconds Clock(clockid_t clock) {
  timespec time = {};
  clock_gettime(clock, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

std::chrono::nanoseconds begin;

// A program that works goes on, however slow the machine is; one that waits ends.
void OnLook(int) {
  const auto worked = Clock(CLOCK_PROCESS_CPUTIME_ID);
  if (Clock(CLOCK_MONOTONIC) - begin - worked > kPatience) _exit(0);
}

void EndWhenWaiting() {
  begin = Clock(CLOCK_MONOTONIC) - Clock(CLOCK_PROCESS_CPUTIME_ID);
  std::signal(SIGALRM, OnLook);
  const timeval look = {0, std::chrono::microseconds(kLook).count()};
  const itimerval every = {look, look};
  setitimer(ITIMER_REAL, &every, nullptr);
}

// As they were typed: the word under the cursor may have an open quote.
std::vector<std::string> Unquoted(const std::vector<std::string>& typed) {
  std::vector<std::string> words;
  for (const std::string& word : typed) {
    const SplitLine split = SplitWords(word);
    words.push_back(split.words.empty() ? "" : split.words.front());
  }
  return words;
}

// The shell itself closes a quote that is open, and keeps what is between.
std::string AsTyped(const std::string& text, const std::string& typed) {
  const bool in_quotes = typed.rfind('\'', 0) == 0 || typed.rfind('"', 0) == 0;
  return in_quotes ? text : Escaped(text);
}

void Print(std::vector<std::string> arguments) {
  const bool quoted = !arguments.empty() && arguments.front() == "--quoted";
  if (quoted) arguments.erase(arguments.begin());
  if (!arguments.empty() && arguments.front() == "--") arguments.erase(arguments.begin());
  std::optional<VptzClient> client;
  const Library library = [&]() -> VptzClient& { return client ? *client : client.emplace(); };
  std::string lines;
  for (const Candidate& candidate : Complete(quoted ? Unquoted(arguments) : arguments, library).candidates) {
    const std::string text = quoted ? AsTyped(candidate.text, arguments.back()) : candidate.text;
    lines += text + "\t" + Printable(candidate.description) + "\n";
  }
  std::fputs(lines.c_str(), stdout);
  std::fflush(stdout);
}

}  // namespace

std::vector<Candidate> NextWords(const std::string& group) {
  std::vector<Candidate> words;
  for (const Command& command : Commands()) {
    if (command.group == group) words.push_back({command.verb, command.help});
  }
  if (!group.empty()) return words;
  for (const Group& each : Groups()) words.push_back({each.name, each.help});
  return words;
}

Completion Complete(const std::vector<std::string>& words, const Library& library) {
  Reader reader;
  const LineSoFar line = reader.Read(words);
  Completion completion;
  completion.files = line.wanted != nullptr && line.wanted->kind == Kind::kFile;
  for (Candidate& candidate : Candidates(reader, line, library)) {
    const bool fits = candidate.text.rfind(line.typed, 0) == 0;
    if (fits && CanBeOffered(candidate.text)) completion.candidates.push_back(std::move(candidate));
  }
  return completion;
}

int PrintCompletion(const std::vector<std::string>& arguments) noexcept {
  try {
    EndWhenWaiting();
    const ErrorsSilenced silenced;
    Print(arguments);
  } catch (const std::exception&) {
    // A person who presses a key wants candidates, no reasons.
  }
  return 0;
}

}  // namespace vptzctl
