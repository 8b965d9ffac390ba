#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>

#include "app/options.h"
#include "app/progress.h"
#include "app/startup.h"
#include "bus/server.h"
#include "drivers/simulated/clock.h"
#include "drivers/simulated/simulated_fleet.h"
#include "fleet/fleet.h"
#include "fleet/positions.h"
#include "fleet/start.h"
#include "store/database.h"
#include "view/fleet_view.h"
#include "view/view_server.h"

namespace {

using namespace vptzd;

// Blocked before the first thread starts, so that only WaitForEnd gets them.
sigset_t BlockSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGHUP);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return signals;
}

SimulatedFleet ReadSimulatedFleet(const Options& options) {
  const std::size_t cameras = options.cameras.value_or(2);
  return options.fleet ? ReadFleetFile(*options.fleet, cameras) : BuiltInFleet(cameras);
}

void TellFaults(std::size_t count) { std::cout << "vptzd: " << count << " faults in force" << std::endl; }

// A file that cannot be read changes nothing.
void ReadFaultsAgain(const Options& options, Fleet& fleet) {
  try {
    SimulatedFleet simulated = ReadSimulatedFleet(options);
    const std::size_t count = simulated.faults.size();
    {
      const auto lock = fleet.Enter();
      fleet.SetFaults(std::move(simulated.faults));
    }
    TellFaults(count);
  } catch (const std::exception& error) {
    std::cerr << "vptzd: the faults stay as they are: " << error.what() << std::endl;
  }
}

void WaitForEnd(const sigset_t& signals, const Options& options, Fleet& fleet) {
  int signal = 0;
  while (sigwait(&signals, &signal) == 0 && signal == SIGHUP) {
    if (fleet.simulated()) ReadFaultsAgain(options, fleet);
  }
}

std::size_t KnownCameras(const Fleet& fleet) {
  const auto known = [](const auto& member) { return member->known(); };
  return static_cast<std::size_t>(std::count_if(fleet.members().begin(), fleet.members().end(), known));
}

// Begins to serve the web page, if there is to be one; false when it cannot.
bool Show(const Options& options, ViewServer& page) {
  if (!options.view) return true;
  const int port = page.Start(*options.view);
  if (port < 0) {
    std::cerr << "vptzd: cannot serve the web page on port " << *options.view << ": it is taken\n";
    return false;
  }
  std::cout << "vptzd: what the cameras see is at http://localhost:" << port << '/' << std::endl;
  return true;
}

int Serve(const Options& options, Context& context, const sigset_t& signals) {
  LivePositions positions(context.fleet, context.agenda);
  Server server(context);
  const char* address = options.bus ? options.bus->c_str() : nullptr;
  const std::size_t known = KnownCameras(context.fleet);
  const int result = server.Start(address);
  if (result < 0) {
    std::cerr << DescribeStartFailure(address, result) << '\n';
    return ExitCodeOf(result);
  }
  ViewServer page([&context] { return ViewOf(context.fleet); });
  if (!Show(options, page)) return kExitNoView;
  positions.Start();
  {
    const Worker worker(context.agenda);
    std::cout << "vptzd: serving \"" << Server::kName << "\" with " << known << " cameras" << std::endl;
    WaitForEnd(signals, options, context.fleet);
  }
  positions.Write();
  return kExitDone;
}

// An installed tree may be moved: its own script lies beside the program.
std::string SeedFile() {
  std::error_code missing;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", missing);
  if (missing) return VPTZD_SEED_FILE;
  const auto beside = program.parent_path() / VPTZD_SEED_FROM_PROGRAM;
  return std::filesystem::exists(beside, missing) ? beside.string() : VPTZD_SEED_FILE;
}

// False when the database cannot be used.
bool BringUpCameras(const Options& options, Fleet& fleet) {
  StartProgress progress(std::cerr);
  try {
    if (!OpenDatabase(options.database, SeedFile())) return false;
    StoreCameras(fleet, [&](std::size_t camera, std::size_t of) { progress.Reached(camera, of); });
    RestoreAdditions(fleet);
    return true;
  } catch (const Unreadable&) {
    return false;
  }
}

// Fleet and clock outlive the call; signals are blocked.
int Run(const Options& options, Fleet& fleet, std::chrono::milliseconds search_time, const sigset_t& signals) {
  fleet.set_grace(
      std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(options.grace)));
  if (!BringUpCameras(options, fleet)) {
    std::cerr << "vptzd: cannot use the database " << options.database << "; the log tells why\n";
    return kExitNoDatabase;
  }
  Agenda agenda(fleet.clock());
  Context context{fleet, agenda, search_time};
  return Serve(options, context, signals);
}

int RunSimulated(const Options& options, const SimulatedFleet& simulated) {
  const sigset_t signals = BlockSignals();
  const SteadyClock clock;
  Fleet fleet(simulated.cameras, clock);
  fleet.SetFaults(simulated.faults);
  return Run(options, fleet, simulated.search_time, signals);
}

int RunReal(const Options& options) {
  const sigset_t signals = BlockSignals();
  const SteadyClock clock;
  Fleet fleet(clock);
  return Run(options, fleet, std::chrono::seconds(1), signals);
}

// None when the fleet file cannot be used.
std::optional<SimulatedFleet> TryReadSimulatedFleet(const Options& options) {
  try {
    return ReadSimulatedFleet(options);
  } catch (const std::exception& error) {
    std::cerr << "vptzd: cannot use the fleet file: " << error.what() << '\n';
    return std::nullopt;
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Options options;
    if (const auto exit_code = ReadOptions(argc, argv, &options)) return *exit_code;
    if (!options.simulated()) return RunReal(options);
    const auto simulated = TryReadSimulatedFleet(options);
    return simulated ? RunSimulated(options, *simulated) : kExitBadFleet;
  } catch (const std::exception& error) {
    std::cerr << "vptzd: " << error.what() << '\n';
    return kExitFailure;
  }
}
