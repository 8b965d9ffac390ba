// What a handler works with.
#ifndef VPTZ_SERVICE_HANDLERS_CONTEXT_H
#define VPTZ_SERVICE_HANDLERS_CONTEXT_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

#include <vptz/vptz.pb.h>

#include "fleet/agenda.h"
#include "fleet/fleet.h"

namespace vptzd {

// Sends a signal to whoever has subscribed to it.
using Emit = std::function<void(const char* signal, const std::string& payload)>;

// Fleet and agenda outlive it.
struct Context {
  Fleet& fleet;
  Agenda& agenda;
  std::chrono::milliseconds search_time{1000};
  Emit emit = [](const char*, const std::string&) {};

  // Tells everybody that rows have changed: those of one device, or of several.
  void AnnounceRowsOf(std::uint32_t device) const {
    tutorial::DeviceCommand changed;
    changed.set_device_id(device);
    emit("update_devices", changed.SerializeAsString());
  }
  void AnnounceRows() const { emit("update_devices", ""); }
};

}  // namespace vptzd

#endif
