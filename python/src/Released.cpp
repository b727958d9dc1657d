#include "python/src/Released.h"

#include <memory>

namespace cvn73100::python {
namespace {

std::recursive_mutex& Turn() {
  static std::recursive_mutex turn;
  return turn;
}

// The exception a signal handler raised during this thread's wait, until the wait's Interrupted reaches Python.
thread_local std::unique_ptr<py::error_already_set> t_raised;

bool SignalHandlerRaised() {
  py::gil_scoped_acquire gil;
  if (PyErr_CheckSignals() == 0) return false;
  t_raised = std::make_unique<py::error_already_set>();
  return true;
}

}  // namespace

// The GIL is released first, so a thread never holds it while it waits for its turn.
Released::Released()
    : m_gil(PyGILState_Check() ? std::make_optional<py::gil_scoped_release>() : std::nullopt),
      m_turn(Turn()),
      m_signals(SignalHandlerRaised) {}

Released::~Released() = default;

void RegisterInterruptTranslator() {
  py::register_exception_translator([](std::exception_ptr pointer) {
    if (!pointer) return;
    try {
      std::rethrow_exception(pointer);
    } catch (const Interrupted&) {
      if (const std::unique_ptr<py::error_already_set> raised = std::move(t_raised))
        raised->restore();
      else
        PyErr_SetNone(PyExc_KeyboardInterrupt);
    }
  });
}

}  // namespace cvn73100::python
