#include "cli/ConsoleHost.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iostream>

#include "cli/CliText.h"

namespace cvn73100 {
namespace {

// The file dialog's "prompt before replacing" flag.
constexpr long OVERWRITE_PROMPT = 0x2;

}  // namespace

ConsoleHost::ConsoleHost(std::ostream& out, std::ostream& err) : m_out(out), m_err(err) {}

namespace {

// The length of the well-formed UTF-8 sequence at `text[i]`, or 0 when there is none.
std::size_t Utf8SequenceLength(const std::string& text, std::size_t i) {
  const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
  const unsigned char lead = byte(i);
  if (lead < 0x80) return 1;
  const std::size_t length = lead >= 0xC2 && lead <= 0xDF ? 2 : lead >= 0xE0 && lead <= 0xEF ? 3
                             : lead >= 0xF0 && lead <= 0xF4                                  ? 4
                                                                                              : 0;
  if (length == 0 || i + length > text.size()) return 0;
  for (std::size_t k = 1; k < length; ++k) {
    if ((byte(i + k) & 0xC0) != 0x80) return 0;
  }
  // Overlong forms, surrogates and code points above U+10FFFF.
  const unsigned char second = byte(i + 1);
  if ((lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) || (lead == 0xF0 && second < 0x90) ||
      (lead == 0xF4 && second > 0x8F)) {
    return 0;
  }
  return length;
}

}  // namespace

std::string ConsoleHost::ToTerminal(const std::string& text) {
  static constexpr char HEX[] = "0123456789ABCDEF";
  static constexpr char REPLACEMENT[] = "\xEF\xBF\xBD";  // U+FFFD
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') {
      ++i;
      continue;
    }
    // An instrument or a file can carry escape sequences that would drive the terminal.
    if ((c < 0x20 && c != '\n' && c != '\t') || c == 0x7F) {
      out += {'\\', 'x', HEX[c >> 4], HEX[c & 0xF]};
      ++i;
      continue;
    }
    const std::size_t length = Utf8SequenceLength(text, i);
    if (length == 0) {
      out += REPLACEMENT;
      ++i;
      continue;
    }
    // C1 controls (U+0080..U+009F) drive some terminals as escape sequences do.
    if (length == 2 && c == 0xC2 && static_cast<unsigned char>(text[i + 1]) < 0xA0) {
      const auto second = static_cast<unsigned char>(text[i + 1]);
      out += {'\\', 'x', 'C', '2', '\\', 'x', HEX[second >> 4], HEX[second & 0xF]};
    } else {
      out.append(text, i, length);
    }
    i += length;
  }
  return out;
}

bool ConsoleHost::Interactive() const { return ::isatty(STDIN_FILENO) && !m_assumeYes; }

std::ostream& ConsoleHost::Stream(bool error) const { return error || m_json ? m_err : m_out; }

bool ConsoleHost::Ask(const std::string& question) {
  if (m_assumeYes) return true;
  if (!Interactive()) {
    m_err << question << " " << CliText(CliMsg::NO_TERMINAL_CANCEL) << "\n";
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
  return Ask(CliText(CliMsg::ASK_OK_TO_CONTINUE)) ? MsgBoxResult::OK : MsgBoxResult::Cancel;
}

MessageOptionResult ConsoleHost::ShowMessageOption(const MessageOptionRequest& request) {
  MessageOptionResult result;
  m_boxes.push_back(Box{request.title, request.message, 0, false});
  std::ostream& stream = Stream(false);
  stream << "== " << ToTerminal(request.title) << " ==\n" << ToTerminal(request.message) << "\n";
  result.button = request.continueCancel && !Ask(CliText(CliMsg::ASK_CONTINUE)) ? MsgBoxResult::Cancel : MsgBoxResult::OK;
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
      !Ask(CliText(CliMsg::ASK_REPLACE_FILE, {m_fileAnswer}))) {
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
