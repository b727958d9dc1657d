#pragma once
#include <iosfwd>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/Host.h"

namespace cvn73100 {

// The host services on a terminal: message boxes are printed; a question is asked at the prompt
// when standard input is a terminal, and otherwise answered by --yes (OK) or left at Cancel.
//
// With JSON output every box goes to the error stream, so that standard output holds only the JSON
// document; the boxes are recorded either way, for a command to put into its result.
class ConsoleHost : public Host {
 public:
  // A message box as it was shown.
  struct Box {
    std::string title;
    std::string prompt;
    int style = 0;
    bool error = false;
  };

  ConsoleHost(std::ostream& out, std::ostream& err);

  int MsgBox(WindowHandle parent, const std::string& prompt, int style, const std::string& title) override;
  MessageOptionResult ShowMessageOption(const MessageOptionRequest& request) override;
  void PropertyChanged(const std::string& name) override;
  // The file dialogs answer with the path a command set (SetFileAnswer); nullopt (Cancel) without one.
  // The save dialog asks before replacing an existing file when the request says so.
  std::optional<FileDialogResult> GetOpenFileName(const FileDialogRequest& request) override;
  std::optional<FileDialogResult> GetSaveFileName(const FileDialogRequest& request) override;
  void SetClipboardText(const std::string& text) override { m_clipboard = text; }
  std::string ClipboardText() override { return m_clipboard; }

  void SetAssumeYes(bool yes) { m_assumeYes = yes; }
  void SetQuiet(bool quiet) { m_quiet = quiet; }
  void SetJson(bool json) { m_json = json; }
  bool Json() const { return m_json; }
  bool Interactive() const;
  // True once any property of the control changed.
  bool FormChanged() const { return m_formChanged; }

  // Boxes whose title is one of these are errors: printed on the error stream and counted.
  void SetErrorTitles(std::set<std::string> titles) { m_errorTitles = std::move(titles); }
  // The path the next file dialog answers with (made absolute).
  void SetFileAnswer(const std::string& path);

  // What was shown since the last ClearRecord.
  const std::vector<Box>& Boxes() const { return m_boxes; }
  bool ErrorShown() const;
  // Questions answered with Cancel (by the user, or for want of a terminal).
  int Cancelled() const { return m_cancelled; }
  void ClearRecord();

  // Message texts use CR LF between lines; a terminal wants LF. Other control characters are shown as \xNN.
  static std::string ToTerminal(const std::string& text);
  // The answer to a yes/no question: --yes, the user at a terminal, or Cancel.
  bool Ask(const std::string& question);

 private:
  std::ostream& Stream(bool error) const;

  std::ostream& m_out;
  std::ostream& m_err;
  bool m_assumeYes = false;
  bool m_quiet = false;
  bool m_json = false;
  bool m_formChanged = false;
  int m_cancelled = 0;
  std::set<std::string> m_errorTitles;
  std::vector<Box> m_boxes;
  std::string m_fileAnswer;
  std::string m_clipboard;
};

}  // namespace cvn73100
