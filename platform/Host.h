#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace cvn73100 {

// A window of the host's user interface; 0 is none.
using WindowHandle = std::intptr_t;

// Message-box styles and answers, with the values an automation host uses.
namespace MsgBoxStyle {
inline constexpr int OKOnly = 0;
inline constexpr int OKCancel = 1;
inline constexpr int Exclamation = 48;
inline constexpr int Information = 64;
inline constexpr int SetForeground = 65536;
}  // namespace MsgBoxStyle
namespace MsgBoxResult {
inline constexpr int OK = 1;
inline constexpr int Cancel = 2;
}  // namespace MsgBoxResult

// The message-with-option dialog: a message, an option check box, and one of two button modes.
struct MessageOptionRequest {
  WindowHandle parent = 0;
  std::string title;
  std::string message;
  std::string option;
  bool optionChecked = false;
  bool continueCancel = false;  // Continue and Cancel (Cancel answers Escape); otherwise OK alone
  bool placeOnParent = true;    // centre on the parent's rectangle, kept inside the screen
};
struct MessageOptionResult {
  int button = MsgBoxResult::OK;  // MsgBoxResult::OK for OK or Continue, MsgBoxResult::Cancel for Cancel
  bool optionChecked = false;
};

// An open or save file dialog.
struct FileDialogRequest {
  WindowHandle owner = 0;
  std::string title;
  std::vector<std::pair<std::string, std::string>> filters;  // (description, patterns "*.scp;*.stp")
  int filterIndex = 1;                                        // 1-based
  std::string initialDirectory;
  std::string fileName;  // default file name
  long flags = 0;
};
struct FileDialogResult {
  std::string path;
  int filterIndex = 1;
};

// The services of the program that hosts the control: the Qt host, the console host and the
// scripted host of the tests implement it. One host serves the process.
class Host {
 public:
  virtual ~Host() = default;

  // A modal message box; returns the button pressed (MsgBoxResult).
  virtual int MsgBox(WindowHandle parent, const std::string& prompt, int style, const std::string& title) = 0;
  // The control's property `name` changed; the host marks its form as changed.
  virtual void PropertyChanged(const std::string& name) { (void)name; }
  // True when the host runs the control in user (run) mode, false in a design-time host.
  virtual bool AmbientUserMode() { return true; }
  virtual MessageOptionResult ShowMessageOption(const MessageOptionRequest& request);
  // nullopt when the user cancels.
  virtual std::optional<FileDialogResult> GetOpenFileName(const FileDialogRequest& request);
  virtual std::optional<FileDialogResult> GetSaveFileName(const FileDialogRequest& request);
  virtual void SetClipboardText(const std::string& text) { (void)text; }
  virtual std::string ClipboardText() { return {}; }
  // Lets a user interface repaint during long work on its thread.
  virtual void ProcessEvents() {}

  static Host& Current();
  // Installs `host` for the process; nullptr restores the silent default. The caller keeps ownership.
  static void SetCurrent(Host* host);
};

// The default host: answers every box with its first button and shows nothing.
class SilentHost : public Host {
 public:
  int MsgBox(WindowHandle, const std::string&, int, const std::string&) override { return MsgBoxResult::OK; }
};

}  // namespace cvn73100
