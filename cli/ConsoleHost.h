#pragma once
#include <iosfwd>
#include <string>

#include "platform/Host.h"

namespace cvn73100 {

// The host services on a terminal: message boxes are printed; a question is asked at the prompt
// when standard input is a terminal, and otherwise answered by --yes (OK) or left at Cancel.
class ConsoleHost : public Host {
 public:
  ConsoleHost(std::ostream& out, std::ostream& err);

  int MsgBox(WindowHandle parent, const std::string& prompt, int style, const std::string& title) override;
  MessageOptionResult ShowMessageOption(const MessageOptionRequest& request) override;
  void PropertyChanged(const std::string& name) override;

  void SetAssumeYes(bool yes) { m_assumeYes = yes; }
  void SetQuiet(bool quiet) { m_quiet = quiet; }
  bool Interactive() const;
  // True once any property of the control changed: the form is then saved.
  bool FormChanged() const { return m_formChanged; }

  // Message texts use CR LF between lines; a terminal wants LF.
  static std::string ToTerminal(const std::string& text);

 private:
  bool Ask(const std::string& question);

  std::ostream& m_out;
  std::ostream& m_err;
  bool m_assumeYes = false;
  bool m_quiet = false;
  bool m_formChanged = false;
};

}  // namespace cvn73100
