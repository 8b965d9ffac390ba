#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>

#include "camera/clock.h"
#include "camera_rows.h"
#include "database.h"
#include "fleet.h"
#include "live_rows.h"
#include "log.h"
#include "options.h"
#include "progress.h"
#include "server.h"
#include "startup.h"
#include "storage.h"
#include "view/view_server.h"
#include "world.h"
#include "world_view.h"

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

Fleet FleetOf(const Options& options) {
  return options.fleet ? ReadFleetFile(*options.fleet, options.cameras) : BuiltInFleet(options.cameras);
}

void TellFaults(std::size_t count) { std::cout << "vptzd: " << count << " faults in force" << std::endl; }

// A file that cannot be read changes nothing.
void ReadFaultsAgain(const Options& options, World& world) {
  try {
    Fleet fleet = FleetOf(options);
    const std::size_t count = fleet.faults.size();
    {
      const auto lock = world.Enter();
      world.SetFaults(std::move(fleet.faults));
    }
    TellFaults(count);
  } catch (const std::exception& error) {
    std::cerr << "vptzd: the faults stay as they are: " << error.what() << std::endl;
  }
}

void WaitForEnd(const sigset_t& signals, const Options& options, World& world) {
  int signal = 0;
  while (sigwait(&signals, &signal) == 0 && signal == SIGHUP) ReadFaultsAgain(options, world);
}

std::size_t KnownCameras(const World& world) {
  const auto known = [](const auto& member) { return member->known(); };
  return static_cast<std::size_t>(std::count_if(world.members().begin(), world.members().end(), known));
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

int Serve(const Options& options, Service& service, const sigset_t& signals) {
  LiveRows live_rows(service);
  Server server(service);
  const char* address = options.bus ? options.bus->c_str() : nullptr;
  const std::size_t known = KnownCameras(service.world);
  const int result = server.Start(address);
  if (result < 0) {
    std::cerr << DescribeStartFailure(address, result) << '\n';
    return ExitCodeOf(result);
  }
  ViewServer page([&service] { return ViewOf(service.world); });
  if (!Show(options, page)) return kExitNoView;
  live_rows.Start();
  {
    const Worker worker(service.agenda);
    std::cout << "vptzd: serving \"" << Server::kName << "\" with " << known << " cameras" << std::endl;
    WaitForEnd(signals, options, service.world);
  }
  live_rows.Write();
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
bool BringUpCameras(const Options& options, World& world) {
  StartProgress progress(std::cerr);
  try {
    if (!OpenDatabase(options.database, SeedFile())) return false;
    StoreCameras(world, [&](std::size_t camera, std::size_t of) { progress.Reached(camera, of); });
    RestoreAdditions(world);
    return true;
  } catch (const StorageError& error) {
    VPTZD_LOG(LogLevel::kError, "the cameras cannot be stored: %s", error.what());
    return false;
  }
}

int Run(const Options& options, const Fleet& fleet) {
  const sigset_t signals = BlockSignals();
  const SteadyClock clock;
  World world(fleet.cameras, clock);
  world.set_grace(
      std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(options.grace)));
  world.SetFaults(fleet.faults);
  if (!BringUpCameras(options, world)) {
    std::cerr << "vptzd: cannot use the database " << options.database << "; the log tells why\n";
    return kExitNoDatabase;
  }
  Agenda agenda(clock);
  Service service{world, agenda, fleet.search_time};
  return Serve(options, service, signals);
}

// None when the fleet file cannot be used.
std::optional<Fleet> ReadFleetOf(const Options& options) {
  try {
    return FleetOf(options);
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
    const auto fleet = ReadFleetOf(options);
    return fleet ? Run(options, *fleet) : kExitBadFleet;
  } catch (const std::exception& error) {
    std::cerr << "vptzd: " << error.what() << '\n';
    return kExitFailure;
  }
}
