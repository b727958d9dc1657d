#pragma once
#include <pybind11/pybind11.h>

#include <mutex>
#include <optional>
#include <utility>

#include "platform/Interrupt.h"

namespace cvn73100::python {

namespace py = pybind11;

// Work that may wait on an instrument runs without the GIL, so other Python threads go on meanwhile. Such work
// runs one call at a time in the process: the control and the I/O library serve one thread at a time. While it
// waits, Python's signal handlers run at least every Interrupt::kPollInterval; one that raises (Ctrl-C's
// KeyboardInterrupt) ends the wait with its exception. Work inside such work (a Python callback that calls the
// module again) nests.
class Released {
 public:
  Released();
  ~Released();
  Released(const Released&) = delete;
  Released& operator=(const Released&) = delete;

 private:
  std::optional<py::gil_scoped_release> m_gil;
  std::unique_lock<std::recursive_mutex> m_turn;
  Interrupt::Scope m_signals;
};

// Runs `work` as Released work and hands back its result, converted to Python afterwards with the GIL held.
template <class Work>
decltype(auto) Wait(Work&& work) {
  Released released;
  return std::forward<Work>(work)();
}

// For bindings whose whole C++ call is such work: py::call_guard<Released>.
using Waits = py::call_guard<Released>;

// Gives Python the exception that ended a wait (the signal handler's), or KeyboardInterrupt.
void RegisterInterruptTranslator();

}  // namespace cvn73100::python
