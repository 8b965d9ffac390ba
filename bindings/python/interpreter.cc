#include "interpreter.h"

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <thread>

#include "binding.h"

namespace vptz_python {
namespace {

std::atomic<unsigned long> main_thread{0};
std::atomic<int> generation{0};

// The thread that forks is the child's main thread.
void BecomeChild() {
  main_thread = PyThread_get_thread_ident();
  ++generation;
}

bool IsFinalizing() {
#if PY_VERSION_HEX >= 0x030d0000
  return Py_IsFinalizing() != 0;
#else
  return _Py_IsFinalizing() != 0;
#endif
}

}  // namespace

void WatchInterpreter() {
  main_thread = py::module_::import("threading").attr("main_thread")().attr("ident").cast<unsigned long>();
  pthread_atfork(nullptr, nullptr, BecomeChild);
}

bool OnMainThread() { return PyThread_get_thread_ident() == main_thread; }

int ForkGeneration() { return generation; }

RestAfterEnd::~RestAfterEnd() {
  if (OnMainThread() || !IsFinalizing()) return;
  for (;;) pause();
}

WithoutGil::~WithoutGil() noexcept(false) {
  { const RestAfterEnd rest; }
  PyEval_RestoreThread(state_);
}

// Not by pybind11's operator(): its arguments would be given back by a thread that
// no longer has the GIL.
py::object CallPython(const py::handle& function, const py::tuple& arguments) {
  PyObject* result = nullptr;
  {
    const RestAfterEnd the_thread_ends_within;
    result = PyObject_CallObject(function.ptr(), arguments.ptr());
  }
  if (result == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::object>(result);
}

void RunSignalHandlers() {
  if (PyErr_CheckSignals() != 0) throw py::error_already_set();
}

void ThrowIfForkedSince(int generation) {
  if (ForkGeneration() != generation) RaiseUnlessDone(-ENOTCONN);
}

void Sleep(std::chrono::nanoseconds duration) {
  const auto end = std::chrono::steady_clock::now() + duration;
  for (auto left = duration; left.count() > 0; left = end - std::chrono::steady_clock::now()) {
    {
      const WithoutGil others_run;
      std::this_thread::sleep_for(std::min<std::chrono::nanoseconds>(left, kSignalInterval));
    }
    RunSignalHandlers();
  }
}

}  // namespace vptz_python
