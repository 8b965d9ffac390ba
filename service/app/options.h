// The command line of vptzd.
#ifndef VPTZ_SERVICE_APP_OPTIONS_H
#define VPTZ_SERVICE_APP_OPTIONS_H

#include <cstddef>
#include <optional>
#include <string>

namespace vptzd {

struct Options {
  std::optional<std::string> bus;      // none: the bus library's default
  std::optional<std::size_t> cameras;  // simulated ones; none: as many as the fleet file tells, else 2
  std::string database = VPTZ_DATABASE_FILE;
  std::optional<std::string> fleet;  // a file; none: the built-in one
  double grace = 5.0;                // seconds
  std::optional<int> view;           // port of the web page; none: there is no page

  // Else the cameras are real.
  bool simulated() const { return cameras || fleet; }
};

// Reads the command line. Returns an exit code when the program is to end now:
// after --help and --version, and after a mistake, about which it has told on
// standard error.
std::optional<int> ReadOptions(int argc, const char* const* argv, Options* options);

}  // namespace vptzd

#endif
