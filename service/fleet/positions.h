// Writes to the database, now and then, where the axes stand, and what is kept
// beside the rows: home positions and ports.
#ifndef VPTZ_SERVICE_FLEET_POSITIONS_H
#define VPTZ_SERVICE_FLEET_POSITIONS_H

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "fleet/agenda.h"
#include "fleet/fleet.h"

namespace vptzd {

// Its tasks run on the agenda, on which it lives.
class LivePositions {
 public:
  // A moving axis is written once in this time, a resting one only after it has
  // moved.
  static constexpr std::chrono::milliseconds kPeriod{500};

  // To be made before calls reach the service.
  // Fleet and agenda outlive it.
  LivePositions(Fleet& fleet, Agenda& agenda) : fleet_(fleet), agenda_(agenda), ports_(fleet.ports().all()) {}

  // Begins to write, once per period.
  void Start();

  // Writes what has changed since the last time.
  void Write();

 private:
  void Collect();
  void ForgetRemoved();
  void WriteOn();
  void WriteNext();
  void WriteCamera(std::uint32_t ptz, const Camera& camera);
  void WritePorts();

  Fleet& fleet_;
  Agenda& agenda_;
  struct Written {
    PerAxis<double> position;
    std::optional<PerAxis<double>> home;
  };

  std::map<std::uint32_t, Written> written_;  // by PTZ node
  std::vector<std::uint32_t> changed_;        // PTZ nodes that are still to be written
  std::vector<std::string> ports_;
};

}  // namespace vptzd

#endif
