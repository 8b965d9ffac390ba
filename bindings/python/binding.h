// What the parts of the extension share.
#ifndef VPTZ_BINDINGS_PYTHON_BINDING_H
#define VPTZ_BINDINGS_PYTHON_BINDING_H

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <type_traits>
#include <utility>

#include <vptz/vptz_client.h>

namespace vptz_python {

namespace py = pybind11;

// Parts of the module; each adds its own classes and functions.
void AddErrors(py::module_& module);
void AddRecords(py::module_& module);
void AddDevice(py::module_& module);
void AddClient(py::module_& module);

// Raises vptz.VptzError for a result that is not 0.
void RaiseUnlessDone(int result);

// Raises for a negative result; others are the answer.
int AnswerOrRaise(int result);

// Lets other Python threads run while the library waits for an answer.
template <class Operation>
int Unlocked(Operation&& operation) {
  const py::gil_scoped_release release;
  return operation();
}

// Make functions of operations that return a status.
template <class Class, class... Arguments>
auto Command(int (Class::*operation)(Arguments...)) {
  return [operation](Class& self, std::decay_t<Arguments>... arguments) {
    RaiseUnlessDone(Unlocked([&] { return (self.*operation)(std::move(arguments)...); }));
  };
}

template <class Class, class... Arguments>
auto Query(int (Class::*operation)(Arguments...)) {
  return [operation](Class& self, std::decay_t<Arguments>... arguments) {
    return AnswerOrRaise(Unlocked([&] { return (self.*operation)(std::move(arguments)...); }));
  };
}

// Has `callback` called with the payload (bytes) of each signal of that name.
// Replaces an earlier callback of the same client and name.
void Subscribe(VptzClient& client, const std::string& signal, py::function callback);
void Unsubscribe(VptzClient& client, const std::string& signal);

// Forgets a client's callbacks; none runs any more once the client is gone.
void ForgetCallbacks(const VptzClient& client);

}  // namespace vptz_python

#endif
