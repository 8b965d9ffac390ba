#include "app/startup.h"

#include <cerrno>
#include <system_error>

#include "bus/server.h"

namespace vptzd {
namespace {

std::string Reason(int error) {
  switch (-error) {
    case EADDRINUSE:
      return "another service has that name";
    case EINVAL:
      return "the address or the bus settings cannot be read; an address is mqtt://host[:port] or unix:/path";
    case EKEYREJECTED:
      return "the broker refuses user name, password or certificate";
    case EPROTO:
      return "what answers there is not an MQTT 5 broker";
    default:
      return std::generic_category().message(-error);
  }
}

}  // namespace

std::string DescribeExitCodes() {
  return "Exit codes:\n"
         "  0  ended by SIGTERM or SIGINT\n"
         "  1  something failed inside; standard error tells what\n"
         "  2  the command line is wrong\n"
         "  3  no connection to the message bus\n"
         "  4  another service has the name \"vptz\" on that bus\n"
         "  5  the database cannot be used; the log tells why\n"
         "  6  the fleet file cannot be used; standard error tells the line\n"
         "  7  the port of the web page is taken";
}

ExitCode ExitCodeOf(int error) { return error == -EADDRINUSE ? kExitNameTaken : kExitNoBus; }

std::string DescribeStartFailure(const char* address, int error) {
  const std::string where =
      address != nullptr ? address : "the default address ($DORV_BUS_ADDRESS, else unix:/run/dorv/bus.sock)";
  return std::string("vptzd: cannot serve \"") + Server::kName + "\" on the bus at " + where + ": " +
         Reason(error) + " (" + std::to_string(error) + ")";
}

}  // namespace vptzd
