#include "options.h"

#include <CLI/CLI.hpp>

#include "startup.h"
#include "world.h"

namespace vptzd {
namespace {

constexpr double kMaxGrace = 86400.0;

// CLI::Range takes a NaN.
std::string CheckGrace(const std::string& text) {
  double seconds = 0.0;
  const bool fits = CLI::detail::lexical_cast(text, seconds) && seconds >= 0.0 && seconds <= kMaxGrace;
  return fits ? "" : text + " is no number of seconds from 0 to 86400";
}

}  // namespace

std::optional<int> ReadOptions(int argc, const char* const* argv, Options* options) {
  CLI::App app("Reference service for pan-tilt-zoom cameras: answers for simulated cameras on the message bus.",
               "vptzd");
  app.set_version_flag("--version", "vptzd " VPTZ_VERSION);
  app.add_option("--bus", options->bus,
                 "Bus address, mqtt://host[:port] or unix:/path; without it $DORV_BUS_ADDRESS counts, else "
                 "unix:/run/dorv/bus.sock")
      ->type_name("ADDRESS");
  app.add_option("--cameras", options->cameras,
                 "Number of simulated cameras, unless the fleet file has cameras")
      ->type_name("N")
      ->check(CLI::Range(std::size_t{1}, World::kMaxBuiltInCameras))
      ->capture_default_str();
  app.add_option("--database", options->database,
                 "Database that is shared with clients; made when it is missing")
      ->type_name("FILE")
      ->capture_default_str();
  app.add_option("--fleet", options->fleet,
                 "JSON file with the cameras and the faults; SIGHUP reads the faults again")
      ->type_name("FILE");
  app.add_option("--grace", options->grace,
                 "Stop what runs until it is stopped when its driver has made no call about the camera for "
                 "this long; 0 never")
      ->type_name("SECONDS")
      ->check(CLI::Validator([](std::string& text) { return CheckGrace(text); }, ""))
      ->capture_default_str();
  app.add_option("--view", options->view,
                 "Port of a web page that shows what the cameras see, on this machine only; 0 takes any")
      ->type_name("PORT")
      ->check(CLI::Range(0, 65535));
  app.footer(
      "Ends on SIGTERM and SIGINT. Exit codes: 0 ended by a signal, 1 internal failure, 2 wrong usage,\n"
      "3 no connection to the bus, 4 the name \"vptz\" is served by somebody else,\n5 the database cannot be "
      "used,\n6 the fleet file cannot be used, 7 the port of the web page cannot be had.");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kExitDone : kExitUsage;
  }
  return std::nullopt;
}

}  // namespace vptzd
