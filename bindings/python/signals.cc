#include "signals.h"

#include <vptz/vptz.pb.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
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
  std::shared_ptr<std::atomic<bool>> sent;  // of an answer: the call may be answered

  bool used() const { return client != nullptr; }
  bool wanted() const { return callback || !listeners.empty(); }
  // The call was abandoned, and has ended before it was sent.
  bool abandoned() const {
    return kind == Kind::kAnswer && used() && !callback && sent.use_count() == 1 && !*sent;
  }
};

// Used with the GIL held. Never destroyed: a callback may come while the
// interpreter ends.
std::array<Place, kPlaces>& Places() {
  static auto& places = *new std::array<Place, kPlaces>;
  return places;
}

// What the callback holds goes last: its end may run anything, which then finds the
// place free.
void Free(Place& place) { const Place gone = std::exchange(place, Place()); }

std::size_t IndexOf(const Place& place) { return static_cast<std::size_t>(&place - Places().data()); }

Place& FreePlace() {
  const auto free = std::find_if(Places().begin(), Places().end(),
                                 [](const Place& place) { return !place.used() || place.abandoned(); });
  if (free == Places().end()) throw std::runtime_error("too many subscriptions");
  return *free = {};
}

// The place of that subscription; null when there is none.
Place* FindPlace(const Client& client, Kind kind, const std::string& name) {
  const auto found = std::find_if(Places().begin(), Places().end(), [&](const Place& place) {
    return place.client == &client && place.kind == kind && place.name == name;
  });
  return found == Places().end() ? nullptr : &*found;
}

// The place of that subscription, or one that was free.
Place& PlaceFor(const Client& client, Kind kind, const std::string& name) {
  if (Place* const found = FindPlace(client, kind, name)) return *found;
  Place& place = FreePlace();
  place.client = &client;
  place.kind = kind;
  place.name = name;
  return place;
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
  const Place meant = place;
  if (meant.kind == Kind::kAnswer) Free(place);
  if (!meant.callback) return;
  try {
    CallPython(meant.callback, Arguments(meant, name, bytes, length));
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

// Subscribes a place at the bus, where it is subscribed already if it is. A call that
// is interrupted may have subscribed it: then it stays the client's, and nobody listens
// unless it had other users. Needs the client's turn.
int SubscribePlace(Client& client, Place& place) {
  const VptzCallback function = kFunctions[IndexOf(place)];
  const auto [session, result] = client.Run(
      [function, kind = place.kind, name = place.name](VptzClient& self) {
        const int subscribed = kind == Kind::kAllSignals ? self.SubscribeAllSignal(function)
                                                         : self.SubscribeSignal(name.c_str(), function);
        return std::make_pair(static_cast<const VptzClient*>(&self), subscribed);
      },
      place.session);
  if (result >= 0) place.session = session;
  return result;
}

// Raises what the bus has refused, and frees a place that it leaves without use.
void FreeIfRefused(Place& place, int result) {
  if (result < 0 && !place.wanted() && place.session == nullptr) Free(place);
  AnswerOrRaise(result);
}

// Ends a place's subscription at the bus, and frees the place unless a signal handler
// has given it a user meanwhile. Needs the client's turn.
void UnsubscribePlace(Client& client, Place& place) {
  const VptzClient* const session = std::exchange(place.session, nullptr);
  const int result = client.Run(
      [name = place.name](VptzClient& self) { return self.UnsubscribeSignal(name.c_str()); }, session);
  if (!place.wanted()) Free(place);
  AnswerOrRaise(result);
}

// What a callback and its decoder replace.
struct Replaced {
  Replaced(Place& at, const py::function& callback, Decoder decode)
      : place(at),
        own(callback),
        before(std::exchange(at.callback, callback)),
        decoded_before(std::exchange(at.decode, decode)) {}

  // Puts it back, unless a signal handler has replaced the callback meanwhile.
  void Restore() const {
    if (!place.callback.is(own)) return;
    place.callback = before;
    place.decode = decoded_before;
  }

  Place& place;
  const py::function& own;
  const py::function before;
  const Decoder decoded_before;
};

// Replaces a callback while no other thread changes the client's subscriptions.
void SubscribeKind(Client& client, Kind kind, const std::string& name, const py::function& callback,
                   Decoder decode) {
  Client::Turn turn(client);
  turn.Wait();
  Place& place = PlaceFor(client, kind, name);
  const Replaced replaced(place, callback, decode);
  int result = 0;
  try {
    result = SubscribePlace(client, place);
  } catch (...) {
    replaced.Restore();
    throw;
  }
  if (result < 0) replaced.Restore();
  FreeIfRefused(place, result);
}

void Subscribe(Client& client, const std::string& signal, const py::function& callback) {
  RefuseNul(signal, "signal");
  SubscribeKind(client, Kind::kSignal, signal, callback, AsBytes);
}

void SubscribeAll(Client& client, const py::function& callback) {
  SubscribeKind(client, Kind::kAllSignals, "", callback, AsBytes);
}

void Unsubscribe(Client& client, const std::string& signal) {
  RefuseNul(signal, "signal");
  Client::Turn turn(client);
  turn.Wait();
  Place* const place = FindPlace(client, Kind::kSignal, signal);
  if (place == nullptr) RaiseUnlessDone(-ENOENT);
  const py::function gone = std::exchange(place->callback, py::function());
  if (!place->wanted()) UnsubscribePlace(client, *place);
}

// The bus library goes on calling the place's function; so the place stays the
// client's, and nobody listens.
void UnsubscribeAll(Client& client) {
  Place* const place = FindPlace(client, Kind::kAllSignals, "");
  if (place == nullptr) return;
  const py::function gone = std::exchange(place->callback, py::function());
}

std::optional<unsigned int> UpdatedDevice(const std::string& payload) {
  tutorial::DeviceCommand device;
  const bool told = device.ParsePartialFromString(payload) && device.has_device_id();
  return told ? std::optional<unsigned int>(device.device_id()) : std::nullopt;
}

void SubscribeSearchFinish(Client& client, const py::function& callback) {
  SubscribeKind(client, Kind::kSignal, kSearchFinished, callback,
                [](const std::string& payload) { return py::object(py::cast(SearchResult(payload))); });
}

void SubscribeUpdates(Client& client, const py::function& callback) {
  SubscribeKind(client, Kind::kSignal, kDevicesUpdated, callback,
                [](const std::string& payload) { return py::object(py::cast(UpdatedDevice(payload))); });
}

// A call that is interrupted may be answered all the same: then its place stays taken
// until that has come, or until it is known that nothing was sent.
void CallAsync(Client& client, const std::string& method, std::string request, py::function callback,
               int timeout) {
  RefuseNul(method, "method");
  Place& place = FreePlace();
  const auto sent = std::make_shared<std::atomic<bool>>(false);
  place = {&client, Kind::kAnswer, method, nullptr, std::move(callback), AsBytes, {}, sent};
  const VptzCallback function = kFunctions[IndexOf(place)];
  int result = 0;
  try {
    result = client.Run([method, request = std::move(request), function, timeout, sent](VptzClient& self) {
      *sent = true;
      const int told = self.CallAsync(method.c_str(), request.data(), static_cast<int>(request.size()),
                                      function, self.GetVptzTimeout(timeout));
      if (told < 0) *sent = false;
      return told;
    });
  } catch (...) {
    if (place.sent != sent) throw;  // it was answered, and the place is another call's
    const py::function gone = std::exchange(place.callback, py::function());
    throw;
  }
  if (result < 0) Free(place);
  AnswerOrRaise(result);
}

}  // namespace

Listener::Listener(Client& client, const std::string& signal) : client_(client) {
  Client::Turn turn(client);
  turn.Wait();
  Place& place = PlaceFor(client, Kind::kSignal, signal);
  place_ = IndexOf(place);
  if (place.session == nullptr) FreeIfRefused(place, SubscribePlace(client, place));
  place.listeners.push_back(payload_);
}

// A subscription that stays at the bus keeps its place: nobody listens, and nobody
// else gets its signals.
Listener::~Listener() { Leave(); }

void Listener::Leave() {
  auto& listeners = Places()[place_].listeners;
  listeners.erase(std::remove(listeners.begin(), listeners.end(), payload_), listeners.end());
}

void Listener::End() {
  Client::Turn turn(client_);
  turn.Wait();
  Leave();
  Place& place = Places()[place_];
  if (!place.wanted()) UnsubscribePlace(client_, place);
}

std::optional<int> SearchResult(const std::string& payload) {
  tutorial::VptzResponse response;
  const bool told = response.ParsePartialFromString(payload) && response.has_status_code();
  return told ? std::optional<int>(response.status_code()) : std::nullopt;
}

void ForgetCallbacks(const Client& client) {
  for (Place& place : Places()) {
    if (place.client == &client) Free(place);
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
