// Writes to the database, now and then, where the axes stand, and what is kept
// beside the rows: home positions and ports.
#ifndef VPTZ_SERVICE_LIVE_ROWS_H
#define VPTZ_SERVICE_LIVE_ROWS_H

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "service.h"

namespace vptzd {

// Its tasks run on the service's agenda, on which it lives.
class LiveRows {
 public:
  // A moving axis is written once in this time, a resting one only after it has
  // moved.
  static constexpr std::chrono::milliseconds kPeriod{500};

  // To be made before calls reach the service.
  explicit LiveRows(Service& service) : service_(service), ports_(service.world.usb_tty_devices()) {}

  // Begins to write, once per period.
  void Start();

  // Writes what has changed since the last time.
  void Write();

 private:
  void Collect();
  void ForgetRemoved();
  void GoOn();
  void WriteNext();
  void WriteCamera(std::uint32_t ptz, const Camera& camera);
  void WritePorts();

  Service& service_;
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
