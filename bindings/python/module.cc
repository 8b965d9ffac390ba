#include "binding.h"
#include "interpreter.h"

namespace vptz_python {
namespace {

constexpr char kClientText[] =
    "Drives cameras through the service 'vptz'.\n\n"
    "Devices, PTZ nodes and media sources are named by their row ids: Device.id, PtzProfile.id and "
    "MediaProfile.id. `timeout` is in seconds; 0 and less is the configured one. Positions are degrees and, "
    "for "
    "the zoom, the magnification factor; speeds and velocities are these per second. A call that fails or "
    "is refused raises VptzError.\n\n"
    "Any thread may use a client: one call is made at a time, others wait for their turn, and other "
    "Python threads run meanwhile. Ctrl-C, and whatever else a signal handler raises, ends a call of the "
    "main thread at once; the call then sends nothing more, and the client can be used.";

constexpr char kDeviceText[] =
    "A device as it was when it was looked up, and its operations.\n\n"
    "`idx` is the place of a profile, from 1: in ptz_list for motion and presets, in media_list for "
    "imaging and focus. Units, time-outs, errors and threads are those of Client. A device keeps its "
    "client alive.";

void AddOperations(py::module_& module) {
  DeviceClass device(module, "Device", kDeviceText);
  ClientClass client(module, "Client", kClientText);
  AddDevice(device);
  AddConnection(client);
  AddSignals(module, client);
  AddDiscovery(client);
  AddRegistry(client, device);
  AddMaintenance(client, device);
  AddMotion(client, device);
  AddPresets(client, device);
  AddImaging(client, device);
  AddNat(client, device);
  AddPower(client);
  AddProfiles(client, device);
  AddWaiting(client, device);
}

}  // namespace
}  // namespace vptz_python

PYBIND11_MODULE(_vptz, module) {
  module.doc() = "Drives pan-tilt-zoom cameras through the service \"vptz\".";
  vptz_python::WatchInterpreter();
  vptz_python::WatchForks();
  vptz_python::AddErrors(module);
  vptz_python::AddRecords(module);
  vptz_python::AddOperations(module);
  module.attr("NOT_COMMANDED") = kVptzNotCommanded;
}
