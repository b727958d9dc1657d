#pragma once
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
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

// A window's position and size in screen pixels.
struct Rect {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
  bool operator==(const Rect&) const = default;
};

// Where a box goes, given its own rectangle once the host has laid it out and its parent's rectangle.
// The control decides (control/AutoCenter); the host calls it and moves the box there, keeping its size.
using Placement = std::function<Rect(const Rect& box, const Rect& parent)>;

// The message-with-option dialog: a message, an option check box, and one of two button modes.
struct MessageOptionRequest {
  WindowHandle parent = 0;
  std::string title;
  std::string message;
  std::string option;
  bool optionChecked = false;
  bool continueCancel = false;  // Continue and Cancel (Cancel answers Escape); otherwise OK alone
  bool placeOnParent = true;    // centre on the parent's rectangle, kept inside the screen
  Placement placement;          // when set, the exact rule for placeOnParent
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
  int filterIndex = 1;                                       // 1-based
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
  // A notice that needs no answer, such as a help that had to be switched off. The default writes a line
  // to standard error.
  virtual void Warning(const std::string& text);
  // Lets a user interface repaint during long work on its thread.
  virtual void ProcessEvents() {}

  // A modal message box placed by `place` over `parent` (null `place`: the host's own placement). The
  // help file and context go with the box only when both are given. The default is MsgBox.
  virtual int MsgBoxPlaced(WindowHandle parent, const std::string& prompt, int style, const std::string& title,
                           const Placement& place, const std::string& helpFile, int helpContext);
  // Shows the control's property pages (their class names, in order) in the host's property frame,
  // opening on pages[initialPage]. The default shows nothing.
  virtual void ShowPropertyPages(const std::vector<std::string>& pages, int initialPage) {
    (void)pages;
    (void)initialPage;
  }
  // The screen's width and height in pixels.
  virtual std::pair<int, int> ScreenSizeInPixels() { return {1920, 1080}; }
  // The About box: a title, its lines and one OK button. The default is a message box of the lines.
  virtual void ShowAboutBox(const std::string& title, const std::vector<std::string>& lines);

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
