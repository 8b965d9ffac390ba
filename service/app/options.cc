#include "app/options.h"

#include <algorithm>
#include <charconv>
#include <iostream>
#include <numeric>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "app/startup.h"
#include "fleet/fleet.h"

namespace vptzd {
namespace {

constexpr double kMaxGrace = 86400.0;
constexpr int kMaxPort = 65535;

std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

// A check that tells what is wrong in the words of this program. The library's own
// takes a NaN.
CLI::Validator Seconds() {
  const auto check = [](std::string& text) {
    double seconds = 0.0;
    const bool fits = CLI::detail::lexical_cast(text, seconds) && seconds >= 0.0 && seconds <= kMaxGrace;
    return fits ? std::string() : Quoted(text) + " is not a number from 0 to 86400";
  };
  return CLI::Validator(check, "");
}

CLI::Validator WholeNumber(int min, int max) {
  const auto check = [=](std::string& text) {
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc() && rest == end && number >= min && number <= max) return std::string();
    return Quoted(text) + " is not a whole number from " + std::to_string(min) + " to " + std::to_string(max);
  };
  return CLI::Validator(check, "");
}

// How many letters are to be added, taken away or exchanged.
std::size_t Distance(const std::string& from, const std::string& to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), 0U);
  for (std::size_t i = 0; i < from.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < to.size(); ++j) {
      const std::size_t exchanged = diagonal + (from[i] == to[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({exchanged, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

// ", perhaps --view is meant"; empty when no option is much like it.
std::string Suggestion(const CLI::App& app, const std::string& word) {
  constexpr std::size_t kAlike = 2;
  std::string nearest;
  std::size_t least = kAlike + 1;
  for (const CLI::Option* option : app.get_options()) {
    const std::string name = option->get_name();
    const std::size_t distance = Distance(word.substr(0, word.find('=')), name);
    if (distance >= least) continue;
    least = distance;
    nearest = name;
  }
  return nearest.empty() ? "" : ", perhaps " + nearest + " is meant";
}

// Why the command line cannot be used.
std::string Reason(const CLI::App& app, const CLI::ParseError& error) {
  const std::vector<std::string> rest = app.remaining();
  if (rest.empty()) return error.what();
  const std::string& word = rest.front();
  if (word.rfind('-', 0) != 0) return Quoted(word) + " was not expected";
  return "there is no option " + word + Suggestion(app, word);
}

void AddOptions(CLI::App* app, Options* options) {
  app->set_help_flag("-h,--help", "print this help");
  app->set_version_flag("--version", "vptzd " VPTZ_VERSION, "print the version");
  app->add_option(
         "--bus", options->bus,
         "where the message bus is: mqtt://host[:port] or unix:/path; without it $DORV_BUS_ADDRESS, else "
         "unix:/run/dorv/bus.sock")
      ->type_name("ADDRESS")
      ->option_text("ADDRESS");
  app->add_option("--cameras", options->cameras,
                  "simulate N cameras, 1 to 64; default 2 with a fleet file that lists none. With neither "
                  "--cameras nor --fleet no camera is simulated")
      ->type_name("N")
      ->option_text("N")
      ->check(WholeNumber(1, static_cast<int>(Fleet::kMaxBuiltInCameras)));
  app->add_option(
         "--database", options->database,
         "the database that is shared with clients; made when it is missing; default " + options->database)
      ->type_name("FILE")
      ->option_text("FILE");
  app->add_option("--fleet", options->fleet,
                  "simulate the cameras of a JSON file, and its faults; SIGHUP reads the faults again")
      ->type_name("FILE")
      ->option_text("FILE");
  app->add_option("--grace", options->grace,
                  "stop a continuous motion or a focus drive when its caller has made no call about the camera "
                  "for this long; 0 is never; 0 to 86400; default 5")
      ->type_name("SECONDS")
      ->option_text("SECONDS")
      ->check(Seconds());
  app->add_option(
         "--view", options->view,
         "serve a web page that shows what simulated cameras see, on this machine only; 0 takes any free port; "
         "0 to 65535")
      ->type_name("PORT")
      ->option_text("PORT")
      ->check(WholeNumber(0, kMaxPort));
}

}  // namespace

std::optional<int> ReadOptions(int argc, const char* const* argv, Options* options) {
  CLI::App app(
      "Serves pan-tilt-zoom cameras, real or simulated ones, under the name \"vptz\" on the message bus.",
      "vptzd");
  AddOptions(&app, options);
  app.footer("Runs in the foreground until SIGTERM or SIGINT.\n\n" + DescribeExitCodes());
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& success) {
    app.exit(success);
    return kExitDone;
  } catch (const CLI::ParseError& error) {
    std::cerr << "vptzd: " << Reason(app, error) << "; see 'vptzd --help'\n";
    return kExitUsage;
  }
  return std::nullopt;
}

}  // namespace vptzd
