// What the parts of the extension share.
#ifndef VPTZ_BINDINGS_PYTHON_BINDING_H
#define VPTZ_BINDINGS_PYTHON_BINDING_H

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include <vptz/vptz_client.h>

#include "client.h"

namespace vptz_python {

namespace py = pybind11;

// vptz.Device: a copy of a handle, and the client that makes its calls.
struct Device : CVptzDevice {
  Device(CVptzDevice&& handle, std::shared_ptr<Client> its_client)
      : CVptzDevice(std::move(handle)), client(std::move(its_client)) {}
  std::shared_ptr<Client> client;
};

using ClientClass = py::class_<Client, std::shared_ptr<Client>>;
using DeviceClass = py::class_<Device>;

// Parts of the module, one per subject; each adds its classes, functions and
// operations.
void AddErrors(py::module_& module);
void AddRecords(py::module_& module);
void AddDevice(DeviceClass& device);
void AddConnection(ClientClass& client);
void AddSignals(py::module_& module, ClientClass& client);
void AddDiscovery(ClientClass& client);
void AddRegistry(ClientClass& client, DeviceClass& device);
void AddMaintenance(ClientClass& client, DeviceClass& device);
void AddMotion(ClientClass& client, DeviceClass& device);
void AddPresets(ClientClass& client, DeviceClass& device);
void AddImaging(ClientClass& client, DeviceClass& device);
void AddNat(ClientClass& client, DeviceClass& device);
void AddPower(ClientClass& client);
void AddProfiles(ClientClass& client, DeviceClass& device);
void AddWaiting(ClientClass& client, DeviceClass& device);

// The vptz.VptzError of a result, to be raised or handed to a callback.
py::object ErrorOf(int result);

// Raises vptz.VptzError for a result that is not 0.
void RaiseUnlessDone(int result);

// Raises for a negative result; others are the answer.
int AnswerOrRaise(int result);

// Raises vptz.UnknownDeviceError.
[[noreturn]] void RaiseUnknownDevice(int device_id);

// Raises ValueError for a text with a NUL character, where the library would take it
// for the text's end.
void RefuseNul(const std::string& text, const char* what);

// What Client.devices and Client.ptz_profile return.
py::list Devices(Client& client);
VptzPtzData PtzProfile(Client& client, unsigned int device_id, const std::string& token, int timeout);

// A text without the user and password that an address in it may hold.
std::string WithoutCredentials(const std::string& text);

// Forgets a client's callbacks: none begins any more.
void ForgetCallbacks(const Client& client);

// Runs `operation`, a member function of VptzClient, or of CVptzDevice on a copy of
// the handle: an interrupted call may still use it.
template <class... Parameters, class... Arguments>
int Run(Client& client, int (VptzClient::*operation)(Parameters...), Arguments&&... arguments) {
  return client.Run([operation, owned = std::tuple<std::decay_t<Parameters>...>(
                                    std::forward<Arguments>(arguments)...)](VptzClient& self) mutable {
    return std::apply([&](auto&... each) { return (self.*operation)(std::move(each)...); }, owned);
  });
}

template <class Operation>
auto RunOnCopy(Device& device, Operation operation) {
  return device.client->Run(
      [operation = std::move(operation), copy = static_cast<CVptzDevice&>(device)](VptzClient& self) mutable {
        copy.SetVptzClient(&self);
        const int result = operation(copy);
        return std::make_pair(result, std::move(copy));
      });
}

template <class... Parameters, class... Arguments>
int Run(Device& device, int (CVptzDevice::*operation)(Parameters...), Arguments&&... arguments) {
  const auto call = [operation, owned = std::tuple<std::decay_t<Parameters>...>(
                                    std::forward<Arguments>(arguments)...)](CVptzDevice& copy) mutable {
    return std::apply([&](auto&... each) { return (copy.*operation)(std::move(each)...); }, owned);
  };
  return RunOnCopy(device, call).first;
}

// Python's class for one of the library's.
template <class Class>
using PythonClass = std::conditional_t<std::is_same_v<Class, VptzClient>, Client, Device>;

// The last argument of most operations.
inline py::arg_v Timeout() { return py::arg("timeout") = 0; }

// The default of a number that is to stay as it is.
constexpr double kLeave = kVptzNotCommanded;

// Make functions of operations that return a status.
template <class Class, class... Parameters>
auto Command(int (Class::*operation)(Parameters...)) {
  return [operation](PythonClass<Class>& self, std::decay_t<Parameters>... arguments) {
    RaiseUnlessDone(Run(self, operation, std::move(arguments)...));
  };
}

// Of those whose result is an answer.
template <class Class, class... Parameters>
auto Query(int (Class::*operation)(Parameters...)) {
  return [operation](PythonClass<Class>& self, std::decay_t<Parameters>... arguments) {
    return AnswerOrRaise(Run(self, operation, std::move(arguments)...));
  };
}

// An operation that changes the handle's record, which it does where it succeeds
// and where it fails.
template <class Operation>
int RunAndKeep(Device& device, Operation operation) {
  auto [result, changed] = RunOnCopy(device, std::move(operation));
  static_cast<CVptzDevice&>(device) = std::move(changed);
  return result;
}

// Make functions of such operations.
inline auto Load(int (CVptzDevice::*loader)()) {
  return [loader](Device& self) {
    return AnswerOrRaise(RunAndKeep(self, [loader](CVptzDevice& copy) { return (copy.*loader)(); }));
  };
}

}  // namespace vptz_python

#endif
