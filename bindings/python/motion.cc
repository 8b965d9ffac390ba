#include "binding.h"

namespace vptz_python {
namespace {

py::arg_v Left(const char* name) { return py::arg(name) = kLeave; }
py::arg_v Index() { return py::arg("idx") = 1; }
py::arg_v Yes(const char* name) { return py::arg(name) = true; }

// What both classes say of an operation.
constexpr char kAbsolute[] =
    "Moves to a position and stops there; axes without one are left alone. Returns when the service has "
    "accepted the command.";
constexpr char kAbsolutePan[] = "Moves the pan axis to a position, in degrees and degrees per second.";
constexpr char kAbsoluteTilt[] = "Moves the tilt axis to a position, in degrees and degrees per second.";
constexpr char kAbsolutePanTilt[] = "Moves pan and tilt to a position, in degrees and degrees per second.";
constexpr char kAbsoluteZoom[] = "Moves the zoom to a magnification factor, in factors per second.";
constexpr char kContinuous[] =
    "Moves until stopped or to a limit; axes without a velocity are left alone. Three zeros are three "
    "velocities, not a stop.";
constexpr char kContinuousPan[] = "Moves the pan axis until stopped, in degrees per second.";
constexpr char kContinuousTilt[] = "Moves the tilt axis until stopped, in degrees per second.";
constexpr char kContinuousPanTilt[] = "Moves pan and tilt until stopped, in degrees per second.";
constexpr char kContinuousZoom[] = "Moves the zoom until stopped, in factors per second.";
constexpr char kStop[] = "Stops the named axes, whatever moves them.";
constexpr char kPanTiltStop[] = "Stops pan and tilt.";
constexpr char kZoomStop[] = "Stops the zoom.";
constexpr char kGotoHome[] = "Moves to the stored home position.";
constexpr char kSetHome[] = "Stores the present position as home.";

void AddToClient(ClientClass& client) {
  const py::arg id("ptz_id");
  client
      .def("absolute_move", Command(&VptzClient::AbsoluteMove), id, Left("pan"), Left("tilt"), Left("zoom"),
           Left("pan_speed"), Left("tilt_speed"), Left("zoom_speed"), Timeout(), kAbsolute)
      .def("absolute_pan_move", Command(&VptzClient::AbsolutePanMove), id, py::arg("pan"), Left("pan_speed"),
           Timeout(), kAbsolutePan)
      .def("absolute_tilt_move", Command(&VptzClient::AbsoluteTiltMove), id, py::arg("tilt"),
           Left("tilt_speed"), Timeout(), kAbsoluteTilt)
      .def("absolute_pan_tilt_move", Command(&VptzClient::AbsolutePanTiltMove), id, py::arg("pan"),
           py::arg("tilt"), Left("pan_speed"), Left("tilt_speed"), Timeout(), kAbsolutePanTilt)
      .def("absolute_zoom_move", Command(&VptzClient::AbsoluteZoomMove), id, py::arg("zoom"),
           Left("zoom_speed"), Timeout(), kAbsoluteZoom)
      .def("continuous_move", Command(&VptzClient::ContinuousMove), id, Left("pan"), Left("tilt"), Left("zoom"),
           Timeout(), kContinuous)
      .def("continuous_pan_move", Command(&VptzClient::ContinuousPanMove), id, py::arg("pan"), Timeout(),
           kContinuousPan)
      .def("continuous_tilt_move", Command(&VptzClient::ContinuousTiltMove), id, py::arg("tilt"), Timeout(),
           kContinuousTilt)
      .def("continuous_pan_tilt_move", Command(&VptzClient::ContinuousPanTiltMove), id, py::arg("pan"),
           py::arg("tilt"), Timeout(), kContinuousPanTilt)
      .def("continuous_zoom_move", Command(&VptzClient::ContinuousZoomMove), id, py::arg("zoom"), Timeout(),
           kContinuousZoom)
      .def("stop", Command(&VptzClient::PtzStop), id, Yes("pan"), Yes("tilt"), Yes("zoom"), Timeout(), kStop)
      .def("pan_tilt_stop", Command(&VptzClient::PanTiltStop), id, Timeout(), kPanTiltStop)
      .def("zoom_stop", Command(&VptzClient::ZoomStop), id, Timeout(), kZoomStop)
      .def("goto_home", Command(&VptzClient::GotoHome), id, Left("pan_speed"), Left("tilt_speed"),
           Left("zoom_speed"), Timeout(), kGotoHome)
      .def("set_home", Command(&VptzClient::SetHome), id, Timeout(), kSetHome)
      .def("set_track_mode", Command(&VptzClient::SetTrackMode), id, py::arg("mode"), Timeout(),
           "Sets the tracking mode; its numbers are the service's.");
}

void SetTrackMode(Device& device, unsigned int mode, unsigned int idx, int timeout) {
  RaiseUnlessDone(RunAndKeep(device, [=](CVptzDevice& copy) { return copy.SetTrackMode(mode, idx, timeout); }));
}

void AddToDevice(DeviceClass& device) {
  device
      .def("absolute_move", Command(&CVptzDevice::AbsoluteMove), Left("pan"), Left("tilt"), Left("zoom"),
           Left("pan_speed"), Left("tilt_speed"), Left("zoom_speed"), Index(), Timeout(), kAbsolute)
      .def("absolute_pan_move", Command(&CVptzDevice::AbsolutePanMove), py::arg("pan"), Left("pan_speed"),
           Index(), Timeout(), kAbsolutePan)
      .def("absolute_tilt_move", Command(&CVptzDevice::AbsoluteTiltMove), py::arg("tilt"), Left("tilt_speed"),
           Index(), Timeout(), kAbsoluteTilt)
      .def("absolute_pan_tilt_move", Command(&CVptzDevice::AbsolutePanTiltMove), py::arg("pan"),
           py::arg("tilt"), Left("pan_speed"), Left("tilt_speed"), Index(), Timeout(), kAbsolutePanTilt)
      .def("absolute_zoom_move", Command(&CVptzDevice::AbsoluteZoomMove), py::arg("zoom"), Left("zoom_speed"),
           Index(), Timeout(), kAbsoluteZoom)
      .def("continuous_move", Command(&CVptzDevice::ContinuousMove), Left("pan"), Left("tilt"), Left("zoom"),
           Index(), Timeout(), kContinuous)
      .def("continuous_pan_move", Command(&CVptzDevice::ContinuousPanMove), py::arg("pan"), Index(), Timeout(),
           kContinuousPan)
      .def("continuous_tilt_move", Command(&CVptzDevice::ContinuousTiltMove), py::arg("tilt"), Index(),
           Timeout(), kContinuousTilt)
      .def("continuous_pan_tilt_move", Command(&CVptzDevice::ContinuousPanTiltMove), py::arg("pan"),
           py::arg("tilt"), Index(), Timeout(), kContinuousPanTilt)
      .def("continuous_zoom_move", Command(&CVptzDevice::ContinuousZoomMove), py::arg("zoom"), Index(),
           Timeout(), kContinuousZoom)
      .def("stop", Command(&CVptzDevice::PtzStop), Index(), Yes("pan"), Yes("tilt"), Yes("zoom"), Timeout(),
           kStop)
      .def("pan_tilt_stop", Command(&CVptzDevice::PanTiltStop), Index(), Timeout(), kPanTiltStop)
      .def("zoom_stop", Command(&CVptzDevice::ZoomStop), Index(), Timeout(), kZoomStop)
      .def("goto_home", Command(&CVptzDevice::GotoHome), Left("pan_speed"), Left("tilt_speed"),
           Left("zoom_speed"), Index(), Timeout(), kGotoHome)
      .def("set_home", Command(&CVptzDevice::SetHome), Index(), Timeout(), kSetHome)
      .def("set_track_mode", SetTrackMode, py::arg("mode"), Index(), Timeout(),
           "Sets the tracking mode, whose numbers are the service's, and loads the live state into ptz_list.");
}

}  // namespace

void AddMotion(ClientClass& client, DeviceClass& device) {
  AddToClient(client);
  AddToDevice(device);
}

}  // namespace vptz_python
