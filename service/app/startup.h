// How vptzd ends, and what it says when it cannot begin.
#ifndef VPTZ_SERVICE_APP_STARTUP_H
#define VPTZ_SERVICE_APP_STARTUP_H

#include <string>

namespace vptzd {

enum ExitCode : int {
  kExitDone = 0,        // ended by SIGTERM or SIGINT
  kExitFailure = 1,     // something failed inside
  kExitUsage = 2,       // wrong command line
  kExitNoBus = 3,       // no connection to the bus
  kExitNameTaken = 4,   // another service has the name
  kExitNoDatabase = 5,  // the database cannot be used
  kExitBadFleet = 6,    // the fleet file cannot be used
  kExitNoView = 7,      // the port of the web page cannot be had
};

// What the exit codes mean, for the help: a heading and a line each.
std::string DescribeExitCodes();

// The exit code for a negative errno value of Server::Start.
ExitCode ExitCodeOf(int error);

// What failed, where and why, for people; one line without its end. `address`
// may be null.
std::string DescribeStartFailure(const char* address, int error);

}  // namespace vptzd

#endif
