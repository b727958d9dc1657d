#include "cli/ConsoleHost.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iostream>

namespace cvn73100 {
namespace {

// The file dialog's "prompt before replacing" flag.
constexpr long OVERWRITE_PROMPT = 0x2;

}  // namespace

ConsoleHost::ConsoleHost(std::ostream& out, std::ostream& err) : m_out(out), m_err(err) {}

std::string ConsoleHost::ToTerminal(const std::string& text) {
  static constexpr char HEX[] = "0123456789ABCDEF";
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
    // An instrument or a file can carry escape sequences that would drive the terminal.
    if ((c < 0x20 && c != '\n' && c != '\t') || c == 0x7F) {
      out += {'\\', 'x', HEX[c >> 4], HEX[c & 0xF]};
      continue;
    }
    out += static_cast<char>(c);
  }
  return out;
}

bool ConsoleHost::Interactive() const { return ::isatty(STDIN_FILENO) && !m_assumeYes; }

std::ostream& ConsoleHost::Stream(bool error) const { return error || m_json ? m_err : m_out; }

bool ConsoleHost::Ask(const std::string& question) {
  if (m_assumeYes) return true;
  if (!Interactive()) {
    m_err << question << " [no terminal: answered Cancel; use --yes to answer OK]\n";
    ++m_cancelled;
    return false;
  }
  std::ostream& stream = Stream(false);
  stream << question << " [y/N] " << std::flush;
  std::string answer;
  const bool yes = std::getline(std::cin, answer) && !answer.empty() &&
                   (answer[0] == 'y' || answer[0] == 'Y' || answer[0] == 'o' || answer[0] == 'O');
  if (!yes) ++m_cancelled;
  return yes;
}

int ConsoleHost::MsgBox(WindowHandle, const std::string& prompt, int style, const std::string& title) {
  const bool question = (style & 7) == MsgBoxStyle::OKCancel;
  const bool error = m_errorTitles.count(title) != 0;
  m_boxes.push_back(Box{title, prompt, style, error});
  const bool warning = (style & MsgBoxStyle::Exclamation) == MsgBoxStyle::Exclamation && !question;
  if (!m_quiet || question || error) {
    std::ostream& stream = Stream(error || warning);
    if (!title.empty()) stream << "== " << ToTerminal(title) << " ==\n";
    stream << ToTerminal(prompt) << "\n";
  }
  if (!question) return MsgBoxResult::OK;
  return Ask("OK to continue?") ? MsgBoxResult::OK : MsgBoxResult::Cancel;
}

MessageOptionResult ConsoleHost::ShowMessageOption(const MessageOptionRequest& request) {
  MessageOptionResult result;
  m_boxes.push_back(Box{request.title, request.message, 0, false});
  std::ostream& stream = Stream(false);
  stream << "== " << ToTerminal(request.title) << " ==\n" << ToTerminal(request.message) << "\n";
  result.button = request.continueCancel && !Ask("Continue?") ? MsgBoxResult::Cancel : MsgBoxResult::OK;
  result.optionChecked = request.optionChecked;
  if (Interactive()) result.optionChecked = Ask("(" + ToTerminal(request.option) + ")");
  return result;
}

void ConsoleHost::PropertyChanged(const std::string&) { m_formChanged = true; }

void ConsoleHost::SetFileAnswer(const std::string& path) {
  m_fileAnswer = path.empty() ? std::string() : std::filesystem::absolute(path).lexically_normal().string();
}

std::optional<FileDialogResult> ConsoleHost::GetOpenFileName(const FileDialogRequest& request) {
  if (m_fileAnswer.empty()) return std::nullopt;
  return FileDialogResult{m_fileAnswer, request.filterIndex};
}

std::optional<FileDialogResult> ConsoleHost::GetSaveFileName(const FileDialogRequest& request) {
  if (m_fileAnswer.empty()) return std::nullopt;
  std::error_code ec;
  if ((request.flags & OVERWRITE_PROMPT) != 0 && std::filesystem::exists(m_fileAnswer, ec) &&
      !Ask(m_fileAnswer + " already exists. Replace it?")) {
    return std::nullopt;
  }
  return FileDialogResult{m_fileAnswer, request.filterIndex};
}

bool ConsoleHost::ErrorShown() const {
  return std::any_of(m_boxes.begin(), m_boxes.end(), [](const Box& box) { return box.error; });
}

void ConsoleHost::ClearRecord() {
  m_boxes.clear();
  m_cancelled = 0;
}

}  // namespace cvn73100
