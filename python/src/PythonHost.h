#pragma once
#include <pybind11/pybind11.h>

#include <memory>
#include <string>

#include "platform/Host.h"

namespace cvn73100::python {

// The host services in a Python process. A message box goes to a handler the script installs
// (cvn73100.set_message_box_handler) and otherwise to sys.stderr, answered with its first button as a
// host without a screen does. The control runs in user mode.
class PythonHost : public Host {
 public:
  int MsgBox(WindowHandle parent, const std::string& prompt, int style, const std::string& title) override;

  // `handler(title, prompt, style)` returns the button (1 OK, 2 Cancel) or None for the first button;
  // None removes it.
  void SetHandler(pybind11::object handler);
  pybind11::object Handler() const;

  // The process's host, installed when the module is imported.
  static PythonHost& Instance();

 private:
  std::shared_ptr<pybind11::object> m_handler;
};

}  // namespace cvn73100::python
