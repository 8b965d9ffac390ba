#include <cstring>

#include "binding.h"

namespace vptz_python {
namespace {

// No errno value is beyond this; the service's refusals are.
constexpr int kLargestErrno = 4095;

struct Described {
  std::string name;
  std::string text;
};

Described Describe(int code) {
  if (code == -1) return {"NOT_SENT", "not connected, or the database lacks the row; nothing was sent"};
  if (code < 0 && code >= -kLargestErrno && strerrorname_np(-code) != nullptr) {
    return {strerrorname_np(-code), strerrordesc_np(-code)};
  }
  return {"REFUSED", "refused by the service"};
}

// Kept for the life of the process, as the interpreter's own classes are.
PyObject* error_class = nullptr;

}  // namespace

void AddErrors(py::module_& module) {
  error_class = PyErr_NewExceptionWithDoc("vptz.VptzError",
                                          "A call that failed, or a command that the service refused.\n\n"
                                          "code: the negative errno value or the service's status\n"
                                          "name: its name, such as 'ETIMEDOUT' or 'REFUSED'",
                                          PyExc_RuntimeError, nullptr);
  module.attr("VptzError") = py::handle(error_class);
}

void RaiseUnlessDone(int result) {
  if (result == 0) return;
  const Described described = Describe(result);
  py::object error = py::reinterpret_borrow<py::object>(error_class)(described.text + " (" + described.name +
                                                                     ", " + std::to_string(result) + ")");
  error.attr("code") = result;
  error.attr("name") = described.name;
  PyErr_SetObject(error_class, error.ptr());
  throw py::error_already_set();
}

int AnswerOrRaise(int result) {
  if (result < 0) RaiseUnlessDone(result);
  return result;
}

}  // namespace vptz_python
