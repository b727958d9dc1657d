#include "cli/ConsoleHost.h"

#include <unistd.h>

#include <iostream>

namespace cvn73100 {

ConsoleHost::ConsoleHost(std::ostream& out, std::ostream& err) : m_out(out), m_err(err) {}

std::string ConsoleHost::ToTerminal(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
    out += text[i];
  }
  return out;
}

bool ConsoleHost::Interactive() const { return ::isatty(STDIN_FILENO) && !m_assumeYes; }

bool ConsoleHost::Ask(const std::string& question) {
  if (m_assumeYes) return true;
  if (!Interactive()) {
    m_err << question << " [no terminal: answered Cancel; use --yes to answer OK]\n";
    return false;
  }
  m_out << question << " [y/N] " << std::flush;
  std::string answer;
  if (!std::getline(std::cin, answer)) return false;
  return !answer.empty() && (answer[0] == 'y' || answer[0] == 'Y' || answer[0] == 'o' || answer[0] == 'O');
}

int ConsoleHost::MsgBox(WindowHandle, const std::string& prompt, int style, const std::string& title) {
  const bool question = (style & 7) == MsgBoxStyle::OKCancel;
  if (!m_quiet || question) {
    std::ostream& stream = (style & MsgBoxStyle::Exclamation) == MsgBoxStyle::Exclamation && !question ? m_err : m_out;
    if (!title.empty()) stream << "== " << ToTerminal(title) << " ==\n";
    stream << ToTerminal(prompt) << "\n";
  }
  if (!question) return MsgBoxResult::OK;
  return Ask("OK to continue?") ? MsgBoxResult::OK : MsgBoxResult::Cancel;
}

MessageOptionResult ConsoleHost::ShowMessageOption(const MessageOptionRequest& request) {
  MessageOptionResult result;
  m_out << "== " << ToTerminal(request.title) << " ==\n" << ToTerminal(request.message) << "\n";
  result.button = request.continueCancel && !Ask("Continue?") ? MsgBoxResult::Cancel : MsgBoxResult::OK;
  result.optionChecked = request.optionChecked;
  if (Interactive()) {
    m_out << "(" << ToTerminal(request.option) << ")";
    result.optionChecked = Ask("");
  }
  return result;
}

void ConsoleHost::PropertyChanged(const std::string&) { m_formChanged = true; }

}  // namespace cvn73100
