#include <array>
#include <utility>

#include "binding.h"

// The library's callbacks are plain functions without an argument of the
// caller's. So there is a function for each place in a table, and the places
// hold Python's callbacks.
namespace vptz_python {
namespace {

constexpr std::size_t kPlaces = 64;

struct Place {
  const VptzClient* client = nullptr;
  std::string signal;
  py::function callback;
};

// Used with the interpreter's lock held. Never destroyed: a callback may come
// while the interpreter ends.
std::array<Place, kPlaces>& Places() {
  static auto& places = *new std::array<Place, kPlaces>;
  return places;
}

void Call(std::size_t index, const void* payload, std::int32_t length) {
  if (!Py_IsInitialized()) return;
  const py::gil_scoped_acquire acquire;
  const py::function callback = Places()[index].callback;
  if (!callback) return;
  try {
    callback(py::bytes(static_cast<const char*>(payload), length < 0 ? 0 : length));
  } catch (py::error_already_set& error) {
    error.discard_as_unraisable("a vptz signal callback");
  }
}

template <std::size_t index>
void OnSignal(bus_client*, void*, const char*, const void* payload, std::int32_t length) {
  Call(index, payload, length);
}

template <std::size_t... indexes>
constexpr std::array<VptzCallback, kPlaces> Functions(std::index_sequence<indexes...>) {
  return {OnSignal<indexes>...};
}

constexpr auto kFunctions = Functions(std::make_index_sequence<kPlaces>());

// The place of that subscription, or a free one.
std::size_t PlaceFor(const VptzClient& client, const std::string& signal) {
  std::size_t free = kPlaces;
  for (std::size_t i = 0; i < kPlaces; ++i) {
    const Place& place = Places()[i];
    if (place.client == &client && place.signal == signal) return i;
    if (place.client == nullptr && free == kPlaces) free = i;
  }
  if (free == kPlaces) throw std::runtime_error("too many subscriptions");
  return free;
}

}  // namespace

void Subscribe(VptzClient& client, const std::string& signal, py::function callback) {
  const std::size_t index = PlaceFor(client, signal);
  const Place before = std::exchange(Places()[index], {&client, signal, std::move(callback)});
  const int result = Unlocked([&] { return client.SubscribeSignal(signal.c_str(), kFunctions[index]); });
  if (result < 0) Places()[index] = before;
  AnswerOrRaise(result);
}

void Unsubscribe(VptzClient& client, const std::string& signal) {
  const int result = Unlocked([&] { return client.UnsubscribeSignal(signal.c_str()); });
  for (Place& place : Places()) {
    if (place.client == &client && place.signal == signal) place = {};
  }
  AnswerOrRaise(result);
}

void ForgetCallbacks(const VptzClient& client) {
  for (Place& place : Places()) {
    if (place.client == &client) place = {};
  }
}

}  // namespace vptz_python
