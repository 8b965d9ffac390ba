#include "signals.h"

#include <vptz/vptz.pb.h>

#include <algorithm>
#include <array>
#include <utility>

#include "interpreter.h"

// The library's callbacks are plain functions without an argument of the
// caller's. So there is a function for each place in a table, and the places
// hold Python's callbacks.
namespace vptz_python {
namespace {

constexpr std::size_t kPlaces = 64;

enum class Kind { kSignal, kAllSignals, kAnswer };

// What a signal's callback gets of the payload.
using Decoder = py::object (*)(const std::string& payload);

py::object AsBytes(const std::string& payload) { return py::bytes(payload); }

struct Place {
  const Client* client = nullptr;
  Kind kind = Kind::kSignal;
  std::string name;                     // of the signal or the method
  const VptzClient* session = nullptr;  // where it is subscribed
  py::function callback;
  Decoder decode = AsBytes;
  std::vector<std::shared_ptr<std::optional<std::string>>> listeners;

  bool used() const { return client != nullptr; }
};

// Used with the GIL held. Never destroyed: a callback may come while the
// interpreter ends.
std::array<Place, kPlaces>& Places() {
  static auto& places = *new std::array<Place, kPlaces>;
  return places;
}

std::size_t FreePlace() {
  const auto free =
      std::find_if(Places().begin(), Places().end(), [](const Place& place) { return !place.used(); });
  if (free == Places().end()) throw std::runtime_error("too many subscriptions");
  return static_cast<std::size_t>(free - Places().begin());
}

// The place of that subscription, or a free one.
std::size_t PlaceFor(const Client& client, Kind kind, const std::string& name) {
  const auto found = std::find_if(Places().begin(), Places().end(), [&](const Place& place) {
    return place.client == &client && place.kind == kind && place.name == name;
  });
  return found == Places().end() ? FreePlace() : static_cast<std::size_t>(found - Places().begin());
}

py::tuple Arguments(const Place& place, const char* name, const std::string& payload, int length) {
  if (place.kind == Kind::kAllSignals) return py::make_tuple(name, py::bytes(payload));
  return py::make_tuple(length < 0 ? ErrorOf(length) : place.decode(payload));
}

// A late one of an earlier user of the place is nobody's.
bool IsMeant(const Place& place, const char* name) {
  return place.used() && (place.kind == Kind::kAllSignals || place.name == name);
}

void Call(std::size_t index, const char* name, const void* payload, std::int32_t length) {
  if (!Py_IsInitialized()) return;
  const RestAfterEnd if_there_is_no_gil;
  const py::gil_scoped_acquire acquire;
  Place& place = Places()[index];
  if (!IsMeant(place, name)) return;
  const std::string bytes(static_cast<const char*>(payload), length < 0 ? 0 : static_cast<std::size_t>(length));
  for (const auto& listener : place.listeners) *listener = bytes;
  const py::function callback = place.callback;
  if (!callback) return;
  try {
    const py::tuple arguments = Arguments(place, name, bytes, length);
    if (place.kind == Kind::kAnswer) place = {};
    CallPython(callback, arguments);
  } catch (py::error_already_set& error) {
    error.discard_as_unraisable("a vptz callback");
  }
}

template <std::size_t index>
void OnSignal(bus_client*, void*, const char* name, const void* payload, std::int32_t length) {
  Call(index, name, payload, length);
}

template <std::size_t... indexes>
constexpr std::array<VptzCallback, kPlaces> Functions(std::index_sequence<indexes...>) {
  return {OnSignal<indexes>...};
}

constexpr auto kFunctions = Functions(std::make_index_sequence<kPlaces>());

// Subscribes a place at the bus, where it is subscribed already if it is.
void SubscribePlace(Client& client, std::size_t index) {
  const Place& place = Places()[index];
  const VptzCallback function = kFunctions[index];
  const auto [session, result] = client.Run(
      [function, kind = place.kind, name = place.name](VptzClient& self) {
        const int subscribed = kind == Kind::kAllSignals ? self.SubscribeAllSignal(function)
                                                         : self.SubscribeSignal(name.c_str(), function);
        return std::make_pair(static_cast<const VptzClient*>(&self), subscribed);
      },
      place.session);
  AnswerOrRaise(result);
  Places()[index].session = session;
}

// Ends a subscription at the bus.
void UnsubscribeAtBus(Client& client, const std::string& name, const VptzClient* session) {
  AnswerOrRaise(client.Run([name](VptzClient& self) { return self.UnsubscribeSignal(name.c_str()); }, session));
}

void SubscribeKind(Client& client, Kind kind, const std::string& name, py::function callback, Decoder decode) {
  const std::size_t index = PlaceFor(client, kind, name);
  Place& place = Places()[index];
  const Place before = place;
  place.client = &client;
  place.kind = kind;
  place.name = name;
  place.callback = std::move(callback);
  place.decode = decode;
  try {
    SubscribePlace(client, index);
  } catch (...) {
    place = before;
    throw;
  }
}

void Subscribe(Client& client, const std::string& signal, py::function callback) {
  SubscribeKind(client, Kind::kSignal, signal, std::move(callback), AsBytes);
}

void SubscribeAll(Client& client, py::function callback) {
  SubscribeKind(client, Kind::kAllSignals, "", std::move(callback), AsBytes);
}

void Unsubscribe(Client& client, const std::string& signal) {
  Place& place = Places()[PlaceFor(client, Kind::kSignal, signal)];
  const VptzClient* const session = place.session;
  place.callback = py::function();
  if (!place.listeners.empty()) return;
  place = {};
  UnsubscribeAtBus(client, signal, session);
}

// The bus library goes on calling the place's function; so the place stays the
// client's, and nobody listens.
void UnsubscribeAll(Client& client) {
  Places()[PlaceFor(client, Kind::kAllSignals, "")].callback = py::function();
}

std::optional<unsigned int> UpdatedDevice(const std::string& payload) {
  tutorial::DeviceCommand device;
  const bool told = device.ParsePartialFromString(payload) && device.has_device_id();
  return told ? std::optional<unsigned int>(device.device_id()) : std::nullopt;
}

void SubscribeSearchFinish(Client& client, py::function callback) {
  SubscribeKind(client, Kind::kSignal, kSearchFinished, std::move(callback),
                [](const std::string& payload) { return py::object(py::cast(SearchResult(payload))); });
}

void SubscribeUpdates(Client& client, py::function callback) {
  SubscribeKind(client, Kind::kSignal, kDevicesUpdated, std::move(callback),
                [](const std::string& payload) { return py::object(py::cast(UpdatedDevice(payload))); });
}

void CallAsync(Client& client, const std::string& method, std::string request, py::function callback,
               int timeout) {
  const std::size_t index = FreePlace();
  Places()[index] = {&client, Kind::kAnswer, method, nullptr, std::move(callback), AsBytes, {}};
  const VptzCallback function = kFunctions[index];
  try {
    AnswerOrRaise(client.Run([method, request = std::move(request), function, timeout](VptzClient& self) {
      return self.CallAsync(method.c_str(), request.data(), static_cast<int>(request.size()), function,
                            self.GetVptzTimeout(timeout));
    }));
  } catch (...) {
    Places()[index] = {};
    throw;
  }
}

}  // namespace

Listener::Listener(Client& client, const std::string& signal)
    : client_(client), place_(PlaceFor(client, Kind::kSignal, signal)) {
  Place& place = Places()[place_];
  const bool subscribed = place.used();
  place.client = &client;
  place.kind = Kind::kSignal;
  place.name = signal;
  place.listeners.push_back(payload_);
  if (subscribed) return;
  try {
    SubscribePlace(client, place_);
  } catch (...) {
    Places()[place_] = {};
    throw;
  }
}

// A subscription that stays at the bus keeps its place: nobody listens, and nobody
// else gets its signals.
Listener::~Listener() {
  auto& listeners = Places()[place_].listeners;
  listeners.erase(std::remove(listeners.begin(), listeners.end(), payload_), listeners.end());
}

void Listener::End() {
  Place& place = Places()[place_];
  if (place.callback || place.listeners.size() > 1) return;
  const std::string name = place.name;
  const VptzClient* const session = place.session;
  place = {};
  UnsubscribeAtBus(client_, name, session);
}

std::optional<int> SearchResult(const std::string& payload) {
  tutorial::VptzResponse response;
  const bool told = response.ParsePartialFromString(payload) && response.has_status_code();
  return told ? std::optional<int>(response.status_code()) : std::nullopt;
}

void ForgetCallbacks(const Client& client) {
  for (Place& place : Places()) {
    if (place.client == &client) place = {};
  }
}

void AddSignals(py::module_& module, ClientClass& client) {
  module.def("search_result", SearchResult, py::arg("payload"),
             "What the payload of the signal 'finish/search_device' tells: the number of cameras found, the "
             "service's refusal (-1011: not stored), or None.");
  module.def(
      "updated_device", UpdatedDevice, py::arg("payload"),
      "What the payload of the signal 'update_devices' tells: the id of the device whose rows have changed, "
      "or None, which means any.");
  client
      .def("subscribe", Subscribe, py::arg("signal"), py::arg("callback"),
           "Calls callback(payload: bytes), on another thread, for each signal of that name. Replaces an "
           "earlier "
           "callback. What a callback raises goes to sys.unraisablehook.")
      .def("unsubscribe", Unsubscribe, py::arg("signal"), "Ends the subscription of a signal.")
      .def("subscribe_all", SubscribeAll, py::arg("callback"),
           "Calls callback(signal: str, payload: bytes), on another thread, for every signal of the service, "
           "also "
           "for one that has a subscription of its own.")
      .def("unsubscribe_all", UnsubscribeAll, "Ends what subscribe_all began; other subscriptions stay.")
      .def("subscribe_search_finish", SubscribeSearchFinish, py::arg("callback"),
           "subscribe('finish/search_device') with the payload decoded: calls callback(search_result).")
      .def(
          "unsubscribe_search_finish", [](Client& self) { Unsubscribe(self, kSearchFinished); },
          "Ends that subscription.")
      .def("subscribe_updates", SubscribeUpdates, py::arg("callback"),
           "subscribe('update_devices') with the payload decoded: calls callback(device_id or None).")
      .def(
          "unsubscribe_updates", [](Client& self) { Unsubscribe(self, kDevicesUpdated); },
          "Ends that subscription.")
      .def("call_async", CallAsync, py::arg("method"), py::arg("request"), py::arg("callback"), Timeout(),
           "Sends what `call` sends and returns at once. Calls callback(reply: bytes), or callback(error: "
           "VptzError) when the call failed, on another thread.");
}

}  // namespace vptz_python
