#include <vptz/wait.h>

#include <algorithm>
#include <cerrno>
#include <chrono>

#include "binding.h"
#include "interpreter.h"
#include "signals.h"

namespace vptz_python {
namespace {

// The pause between two questions, as in vptz/wait.h.
constexpr std::chrono::milliseconds kPause{100};

py::arg_v Limit(double seconds) { return py::arg("limit") = seconds; }

int WaitForService(Client& client, double limit) {
  int status = -1;
  AwaitWithin(limit, kPause, [&] { return (status = Run(client, &VptzClient::GetStatus, 0)) >= 0; });
  return AnswerOrRaise(status);
}

// `wanted` is an id, or says of a device whether it is the one.
bool IsWanted(const py::object& wanted, const py::handle& device) {
  if (py::isinstance<py::int_>(wanted)) return wanted.equal(device.attr("id"));
  return py::bool_(CallPython(wanted, py::make_tuple(device)));
}

py::object WaitForDevice(Client& client, const py::object& wanted, double limit) {
  py::object found;
  const auto look = [&] {
    for (const py::handle device : Devices(client)) {
      if (IsWanted(wanted, device)) found = py::reinterpret_borrow<py::object>(device);
      if (found) return true;
    }
    return false;
  };
  if (!AwaitWithin(limit, kPause, look)) RaiseUnlessDone(-ETIMEDOUT);
  return found;
}

// The live state of a profile, into a record that has the rest.
void Read(Client& client, unsigned int device_id, const std::string& token, VptzPtzData* profile) {
  auto [result, live] = client.Run([device_id, token, copy = *profile](VptzClient& self) mutable {
    const int status = self.QueryPtzProfiles(device_id, token, &copy);
    return std::make_pair(status, std::move(copy));
  });
  AnswerOrRaise(result);
  *profile = std::move(live);
}

VptzPtzData WaitUntilStill(Client& client, unsigned int device_id, const std::string& token, double limit) {
  VptzPtzData now = PtzProfile(client, device_id, token, 0);
  const auto is_still = [&] {
    const VptzPtzData before = now;
    Read(client, device_id, token, &now);
    return VptzIsStill(before, now);
  };
  // The first two readings would agree in motion too if nothing lay between them.
  const double pause = limit > 0.0 ? std::min(limit, std::chrono::duration<double>(kPause).count()) : 0.0;
  Sleep(std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(pause)));
  if (!AwaitWithin(limit - pause, kPause, is_still)) RaiseUnlessDone(-ETIMEDOUT);
  return now;
}

VptzPtzData WaitUntilDeviceIsStill(const Device& device, std::size_t idx, double limit) {
  if (idx < 1 || idx > device.ptz_list.size())
    throw py::index_error("the device has no PTZ profile with that idx");
  return WaitUntilStill(*device.client, device.id, device.ptz_list[idx - 1].node, limit);
}

py::object Search(Client& client, const std::string& scope, const std::string& protocols, int timeout,
                  bool wait, double limit) {
  std::optional<Listener> end;
  if (wait) end.emplace(client, kSearchFinished);
  RaiseUnlessDone(Run(client, &VptzClient::SearchDevice, scope, protocols, timeout));
  if (!wait) return py::none();
  const bool ended = AwaitWithin(limit, kSignalInterval, [&] { return end->payload().has_value(); });
  const std::optional<int> result = SearchResult(end->payload().value_or(std::string()));
  end->End();
  if (!ended) RaiseUnlessDone(-ETIMEDOUT);
  if (result) AnswerOrRaise(*result);
  return py::cast(result);
}

}  // namespace

void AddWaiting(ClientClass& client, DeviceClass& device) {
  client
      .def(
          "search", Search, py::arg("scope") = "", py::arg("protocols") = "", Timeout(),
          py::arg("wait") = false, Limit(60.0),
          "Starts a search for cameras of protocols such as 'ONVIF,NDI'; none means 'ONVIF,QX310,NDI'. The "
          "texts "
          "of `scope` are the service's. With `wait` returns when a search has ended, at most `limit` seconds "
          "later, with the number of cameras found (None when the service does not tell); else returns None at "
          "once, and the signal 'finish/search_device' tells the end. Raises VptzError, with the name "
          "'ETIMEDOUT' "
          "at the limit.")
      .def("wait_for_service", WaitForService, Limit(10.0),
           "Waits until the service answers, at most `limit` seconds. Connect first; that may have failed. "
           "Returns "
           "the service's state, or raises the last failure.")
      .def(
          "wait_for_device", WaitForDevice, py::arg("wanted"), Limit(10.0),
          "Waits until the database holds a device, at most `limit` seconds. `wanted` is its id, or a function "
          "that says of a Device whether it is the one. Raises VptzError with the name 'ETIMEDOUT' at the "
          "limit.")
      .def(
          "wait_until_still", WaitUntilStill, py::arg("device_id"), py::arg("token"), Limit(30.0),
          "Waits until no axis of a PTZ profile moves, as two readings in a row show, at most `limit` seconds. "
          "Returns the profile. Raises VptzError, with the name 'ETIMEDOUT' at the limit.");
  device.def("wait_until_still", WaitUntilDeviceIsStill, py::arg("idx") = 1, Limit(30.0),
             "Client.wait_until_still of a profile of ptz_list. Raises IndexError when there is none.");
}

}  // namespace vptz_python
