#include <vptz/results.h>

#include "binding.h"

namespace vptz_python {
namespace {

constexpr char kErrorText[] =
    "A call that failed, or a command that the service refused.\n\n"
    "code: the result, a negative errno value or the service's status\n"
    "name: its name, such as 'out_of_range' or 'ETIMEDOUT', as vptzctl prints it";

constexpr char kUnknownDeviceText[] =
    "The database has no device with that id.\n\n"
    "code: -1; name: 'not_sent'";

// Kept for the life of the process, as the interpreter's own classes are.
PyObject* error_class = nullptr;
PyObject* unknown_device_class = nullptr;

py::object NewError(PyObject* type, const std::string& text, int result) {
  const char* const name = VptzExplainResult(result).name;
  py::object error =
      py::reinterpret_borrow<py::object>(type)(text + " (" + name + ", " + std::to_string(result) + ")");
  error.attr("code") = result;
  error.attr("name") = name;
  return error;
}

[[noreturn]] void Raise(const py::object& error) {
  PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(error.ptr())), error.ptr());
  throw py::error_already_set();
}

py::tuple Explain(int result) {
  const VptzResultMeaning meaning = VptzExplainResult(result);
  return py::make_tuple(meaning.name, meaning.text);
}

}  // namespace

void AddErrors(py::module_& module) {
  error_class = PyErr_NewExceptionWithDoc("vptz.VptzError", kErrorText, PyExc_RuntimeError, nullptr);
  module.attr("VptzError") = py::handle(error_class);
  const py::tuple bases = py::make_tuple(py::handle(error_class), py::handle(PyExc_LookupError));
  unknown_device_class =
      PyErr_NewExceptionWithDoc("vptz.UnknownDeviceError", kUnknownDeviceText, bases.ptr(), nullptr);
  module.attr("UnknownDeviceError") = py::handle(unknown_device_class);
  module.def("explain", Explain, py::arg("result"),
             "Name and text of a result, as VptzError and vptzctl tell them.");
}

py::object ErrorOf(int result) { return NewError(error_class, VptzExplainResult(result).text, result); }

void RaiseUnlessDone(int result) {
  if (result != 0) Raise(ErrorOf(result));
}

int AnswerOrRaise(int result) {
  if (result < 0) RaiseUnlessDone(result);
  return result;
}

void RefuseNul(const std::string& text, const char* what) {
  if (text.find('\0') != std::string::npos)
    throw py::value_error("the " + std::string(what) + " holds a NUL character");
}

void RaiseUnknownDevice(int device_id) {
  Raise(NewError(unknown_device_class, "the database has no device " + std::to_string(device_id), -1));
}

}  // namespace vptz_python
