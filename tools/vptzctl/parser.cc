#include "parser.h"

#include <algorithm>
#include <limits>
#include <utility>

#include <CLI/CLI.hpp>

#include "command.h"
#include "mistakes.h"
#include "password.h"
#include "usage.h"

namespace vptzctl {
namespace {

constexpr char kDescription[] = "Drives pan-tilt-zoom cameras through the service \"vptz\".";

void AddToList(const Command& command, std::string* text) {
  *text += "  " + Usage(command) + "\n      " + command.help + "\n";
}

std::string ListGroup(const std::string& group) {
  std::string text = "Commands:\n";
  for (const Command& command : Commands()) {
    if (command.group == group) AddToList(command, &text);
  }
  return text;
}

// Group by group, whatever sources the commands are in.
std::string ListCommands() {
  std::string text = ListGroup("");
  for (const Group& group : Groups()) {
    text += "\n" + group.help + ":\n";
    for (const Command& command : Commands()) {
      if (command.group == group.name) AddToList(command, &text);
    }
  }
  return text;
}

std::string Overview() {
  return ListCommands() +
         "\nOptions may stand before or after the command. 'vptzctl COMMAND --help' tells more.\n"
         "\nExit codes:\n" +
         ExitCodeHelp() +
         "\nThe reason of a failure goes to standard error, with --json also into an object with \"error\" on "
         "standard "
         "output.";
}

std::string Operations(const Command& command) {
  const std::string uses = Joined(command.operations, ", ");
  return (uses.empty() ? "Uses nothing of the library." : "Uses of the library: " + uses) +
         "\nOptions of every command, exit codes: vptzctl --help";
}

// ---- building ------------------------------------------------------------------

CLI::callback_t Into(Values* values, const Argument& argument) {
  return [values, &argument](const CLI::results_t& texts) {
    if (texts.size() > 1 && argument.kind != Kind::kTexts) {
      throw CLI::ValidationError(argument.name + " is given more than once");
    }
    try {
      const Value first = ReadValue(argument, texts.front());
      (*values)[argument.name] = argument.kind == Kind::kTexts ? Value(texts) : first;
    } catch (const std::invalid_argument& error) {
      throw CLI::ValidationError(argument.name + " \"" + texts.front() + "\" " + error.what());
    }
    return true;
  };
}

bool MustBeGiven(const Argument& argument) { return !argument.IsOption() && !argument.optional; }

// A blank keeps the parsing library from describing the value in its own words.
std::string ValueText(const Argument& argument) {
  const bool told = argument.IsOption() || argument.kind == Kind::kChoice;
  return told && !argument.placeholder.empty() ? argument.placeholder : " ";
}

void AddOption(CLI::App* app, const Argument& argument, Values* values) {
  const std::string help = HelpWithRules(argument);
  const std::string names = argument.letter.empty() ? argument.name : argument.letter + "," + argument.name;
  if (argument.kind == Kind::kFlag) {
    const auto set = [values, &argument](std::int64_t) { (*values)[argument.name] = true; };
    app->add_flag_function(names, set, help)->disable_flag_override()->option_text(" ");
    return;
  }
  CLI::Option* option = app->add_option(argument.name, Into(values, argument), help);
  option->type_name(argument.placeholder)->option_text(ValueText(argument))->required(MustBeGiven(argument));
  option->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  if (argument.kind == Kind::kTexts && !argument.IsOption()) option->expected(-1)->allow_extra_args();
}

void AddCommand(CLI::App* parent, const Command& command, Invocation* invocation) {
  CLI::App* app = parent->add_subcommand(command.verb, command.help);
  app->fallthrough();
  app->group("");
  app->footer(Operations(command));
  for (const Argument& argument : command.arguments) AddOption(app, argument, &invocation->values);
  app->callback([invocation, &command] { invocation->command = &command; });
}

void AddGroup(CLI::App* parent, const Group& group) {
  CLI::App* app = parent->add_subcommand(group.name, group.help);
  app->fallthrough();
  app->group("");
  app->require_subcommand(1);
  app->footer(ListGroup(group.name));
}

void Build(CLI::App* app, Invocation* invocation, Values* globals) {
  app->get_formatter()->label("SUBCOMMAND", "COMMAND");
  app->get_formatter()->label("Positionals", "Arguments");
  app->set_help_flag("-h,--help", "print this help");
  app->set_version_flag("--version", "vptzctl " VPTZCTL_VERSION, "print the version");
  app->require_subcommand(1);
  app->footer(Overview());
  for (const Argument& argument : GlobalArguments()) AddOption(app, argument, globals);
  for (const Group& group : Groups()) AddGroup(app, group);
  for (const Command& command : Commands()) {
    AddCommand(command.group.empty() ? app : app->get_subcommand(command.group), command, invocation);
  }
}

// ---- reading -------------------------------------------------------------------

void RequireOneOf(const Command& command, const Values& values) {
  const auto& wanted = command.needs_one_of;
  const auto given = [&values](const std::string& name) { return values.count(name) > 0; };
  if (wanted.empty() || std::any_of(wanted.begin(), wanted.end(), given)) return;
  throw UsageError("give at least one of " + Joined(wanted, ", "));
}

void RequireCompanions(const Command& command, const Values& values) {
  for (const Argument& argument : command.arguments) {
    if (values.count(argument.name) == 0) continue;
    if (!argument.needs.empty() && values.count(argument.needs) == 0) {
      throw UsageError(argument.name + " requires " + argument.needs);
    }
    for (const std::string& other : argument.excludes) {
      if (values.count(other) > 0) throw UsageError(argument.name + " excludes " + other);
    }
  }
}

void Complete(Invocation* invocation, const Values& globals) {
  RequireCompanions(*invocation->command, invocation->values);
  RequireOneOf(*invocation->command, invocation->values);
  for (const Argument& argument : invocation->command->arguments) {
    invocation->values.emplace(argument.name, argument.fallback);
  }
  invocation->json = globals.count("--json") > 0;
  invocation->verbose = globals.count("--verbose") > 0;
  if (globals.count("--bus") > 0) invocation->bus = std::get<std::string>(globals.at("--bus"));
  if (globals.count("--timeout") > 0) {
    invocation->timeout = static_cast<int>(std::get<std::uint32_t>(globals.at("--timeout")));
  }
}

// The command or group that the words of the command line have reached.
const CLI::App& Innermost(const CLI::App& app) {
  const std::vector<CLI::App*> chosen = app.get_subcommands();
  return chosen.empty() ? app : Innermost(*chosen.front());
}

// The words with which a command may go on here.
std::vector<std::string> PossibleCommands(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* next : Innermost(app).get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(next->get_name());
  }
  return names;
}

// ---- what is wrong, in the tool's own words --------------------------------------

constexpr char kNoCommand[] = "a command is missing";

// Why no command was reached, which the parsing library does not tell.
std::string MissingCommand(const CLI::App& app) {
  const std::vector<std::string> rest = app.remaining(true);
  const bool named = !rest.empty() && rest.front().rfind('-', 0) != 0;
  if (!named) return kNoCommand;
  return "there is no command \"" + rest.front() + "\"" + Suggestion(rest.front(), PossibleCommands(app));
}

bool ReachedACommand(const CLI::App& app) { return Innermost(app).get_require_subcommand_min() == 0; }

// The words that were understood: "vptzctl move to".
std::string Understood(const CLI::App& app) {
  const std::vector<CLI::App*> chosen = app.get_subcommands();
  return chosen.empty() ? app.get_name() : app.get_name() + " " + Understood(*chosen.front());
}

// Null as long as the words have reached none.
const Command* UnderstoodCommand(const CLI::App& app) {
  for (const Command& command : Commands()) {
    if (app.get_name() + " " + command.Name() == Understood(app)) return &command;
  }
  return nullptr;
}

// The options that the understood command takes.
std::vector<Argument> PossibleOptions(const CLI::App& app) {
  std::vector<Argument> options = GlobalArguments();
  options.push_back(Flag("--help", "").Letter("-h"));
  options.push_back(Flag("--version", ""));
  const Command* const command = UnderstoodCommand(app);
  if (command == nullptr) return options;
  for (const Argument& argument : command->arguments) {
    if (argument.IsOption()) options.push_back(argument);
  }
  return options;
}

// Whether a word that has no place may be a password.
bool MayBeAPassword(const CLI::App& app) {
  const Command* const command = UnderstoodCommand(app);
  return command != nullptr && TakeAPassword(command->arguments);
}

constexpr char kNotRepeated[] = "; it is not repeated here, for it may be a password";

// Why a word that is written like an option was not understood; empty when there
// is none.
std::string UnknownOptionReason(const CLI::App& app, const std::vector<std::string>& words) {
  const std::vector<Argument> options = PossibleOptions(app);
  const std::string unknown = UnknownOption(words, options);
  if (unknown.empty()) return "";
  std::vector<std::string> names;
  names.reserve(options.size());
  for (const Argument& option : options) names.push_back(option.name);
  const std::string suggestion = Suggestion(unknown, names);
  if (suggestion.empty() && MayBeAPassword(app)) {
    return std::string("an option is given that is not there") + kNotRepeated;
  }
  return "there is no option " + unknown + suggestion;
}

[[noreturn]] void Refuse(const CLI::App& app, const std::string& reason) {
  throw UsageError(reason + "; see '" + Understood(app) + " --help'");
}

// An option that is not there explains what else is missing or too much, but for
// an unknown command, which would have options of its own.
[[noreturn]] void RefuseWords(const CLI::App& app, const std::vector<std::string>& words,
                              const std::string& otherwise) {
  const bool named = !ReachedACommand(app) && MissingCommand(app) != kNoCommand;
  const std::string unknown = named ? "" : UnknownOptionReason(app, words);
  Refuse(app, unknown.empty() ? otherwise : unknown);
}

std::string MissingArgument(const CLI::App& app, const Values& values) {
  const Command* const command = UnderstoodCommand(app);
  if (command == nullptr) return MissingCommand(app);
  for (const Argument& argument : command->arguments) {
    if (MustBeGiven(argument) && values.count(argument.name) == 0) return argument.name + " is required";
  }
  return "an argument is missing";
}

std::string FlagWithValueReason(const CLI::App& app, const std::vector<std::string>& words) {
  const std::string flag = FlagWithValue(words, PossibleOptions(app));
  return flag.empty() ? "" : flag + " takes no value";
}

// The mark behind which words are no options is none of them.
std::vector<std::string> WordsLeft(const CLI::App& app) {
  std::vector<std::string> rest = app.remaining(true);
  const auto mark = std::find(rest.begin(), rest.end(), "--");
  if (mark != rest.end()) rest.erase(mark);
  return rest;
}

std::string TooManyWords(const CLI::App& app, const std::vector<std::string>& words) {
  std::string flag = FlagWithValueReason(app, words);
  if (!flag.empty()) return flag;
  const std::vector<std::string> rest = WordsLeft(app);
  const bool one = rest.size() == 1;
  if (MayBeAPassword(app)) {
    return one ? std::string("there is a word too many") + kNotRepeated
               : "there are " + std::to_string(rest.size()) +
                     " words too many; they are not repeated here, for one may be a password";
  }
  return (one ? "there is a word too many: \"" : "there are words too many: \"") + Joined(rest, "\", \"") +
         "\"";
}

// An option without a value can only be the last word.
std::string BadValueCount(const CLI::App& app, const std::vector<std::string>& words) {
  std::string flag = FlagWithValueReason(app, words);
  if (!flag.empty()) return flag;
  const std::string last = words.empty() ? "" : words.back().substr(0, words.back().find('='));
  for (const Argument& option : PossibleOptions(app)) {
    if (option.name == last) return last + " lacks its value, " + option.placeholder;
  }
  return "an option lacks its value";
}

}  // namespace

Invocation Parse(int argc, const char* const* argv) {
  Invocation invocation;
  Values globals;
  CLI::App app(kDescription, "vptzctl");
  const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
  Build(&app, &invocation, &globals);
  try {
    app.parse(argc, argv);
    Complete(&invocation, globals);
  } catch (const CLI::CallForVersion& version) {
    invocation.text = std::string(version.what()) + "\n";
  } catch (const CLI::CallForHelp&) {
    invocation.text = app.help();
  } catch (const CLI::RequiredError&) {
    RefuseWords(app, words, MissingArgument(app, invocation.values));
  } catch (const CLI::ExtrasError&) {
    RefuseWords(app, words, TooManyWords(app, words));
  } catch (const CLI::ArgumentMismatch&) {
    Refuse(app, BadValueCount(app, words));
  } catch (const CLI::ValidationError& error) {
    Refuse(app, error.what());
  } catch (const CLI::ParseError&) {
    Refuse(app, "the command line cannot be read");
  } catch (const UsageError& error) {
    Refuse(app, error.what());
  }
  return invocation;
}

}  // namespace vptzctl
