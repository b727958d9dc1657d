#include "python/src/PythonHost.h"

#include "python/src/Bindings.h"
#include "python/src/Conversions.h"

namespace cvn73100::python {

int PythonHost::MsgBox(WindowHandle, const std::string& prompt, int style, const std::string& title) {
  py::gil_scoped_acquire gil;
  const int firstButton = MsgBoxResult::OK;
  if (m_handler) {
    // The handler may be replaced while it runs; keep this one alive until it returns.
    const auto handler = m_handler;
    const py::object answer = (*handler)(Text(title), Text(prompt), style);
    return answer.is_none() ? firstButton : answer.cast<int>();
  }
  try {
    std::string text = prompt;
    for (std::size_t at = text.find("\r\n"); at != std::string::npos; at = text.find("\r\n", at)) text.erase(at, 1);
    py::module_::import("sys").attr("stderr").attr("write")(Text(title + ": " + text + "\n"));
  } catch (py::error_already_set& error) {
    // No stderr (a GUI interpreter): the box is not shown, as on the silent host.
    error.discard_as_unraisable("cvn73100 message box");
  }
  return firstButton;
}

void PythonHost::SetHandler(py::object handler) {
  m_handler = handler.is_none() ? nullptr : KeepCallable(std::move(handler));
}

py::object PythonHost::Handler() const { return m_handler ? *m_handler : py::none(); }

PythonHost& PythonHost::Instance() {
  // Never destroyed: the control may still show a box while the interpreter shuts down.
  static PythonHost* host = new PythonHost();
  return *host;
}

void BindHost(py::module_& module) {
  Host::SetCurrent(&PythonHost::Instance());
  module.def(
      "set_message_box_handler", [](py::object handler) { PythonHost::Instance().SetHandler(std::move(handler)); },
      py::arg("handler"),
      "Routes the control's message boxes to ``handler(title, prompt, style)``, which returns the button pressed "
      "(1 OK, 2 Cancel) or None for the first button. None restores the default: boxes are written to sys.stderr "
      "and answered with their first button.");
  module.def(
      "get_message_box_handler", [] { return PythonHost::Instance().Handler(); },
      "The handler set with set_message_box_handler, or None.");
}

}  // namespace cvn73100::python
