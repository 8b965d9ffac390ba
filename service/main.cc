#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>

#include "camera/clock.h"
#include "database.h"
#include "options.h"
#include "server.h"
#include "startup.h"
#include "world.h"

namespace {

using namespace vptzd;

// Blocked before the first thread starts, so that only WaitForEnd gets them.
sigset_t BlockEndSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return signals;
}

void WaitForEnd(const sigset_t& signals) {
  int signal = 0;
  sigwait(&signals, &signal);
}

int Run(const Options& options) {
  const sigset_t end_signals = BlockEndSignals();
  const SteadyClock clock;
  World world(options.cameras, clock);
  if (!OpenDatabase(options.database, VPTZD_SEED_FILE)) {
    std::cerr << "vptzd: cannot use the database " << options.database << "; the log tells why\n";
    return kExitNoDatabase;
  }
  StoreCameras(world);
  Server server(world);
  const char* address = options.bus ? options.bus->c_str() : nullptr;
  const int result = server.Start(address);
  if (result < 0) {
    std::cerr << DescribeStartFailure(address, result) << '\n';
    return ExitCodeOf(result);
  }
  std::cout << "vptzd: serving \"" << Server::kName << "\" with " << options.cameras << " cameras" << std::endl;
  WaitForEnd(end_signals);
  return kExitDone;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Options options;
    if (const auto exit_code = ReadOptions(argc, argv, &options)) return *exit_code;
    return Run(options);
  } catch (const std::exception& error) {
    std::cerr << "vptzd: " << error.what() << '\n';
    return kExitFailure;
  }
}
