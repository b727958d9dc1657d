#pragma once
#include <QObject>
#include <QPointer>
#include <QString>
#include <string>
#include <utility>
#include <vector>

#include "platform/Host.h"

class QDialog;
class QWidget;

namespace cvn73100 {
class Cvn73100Scope;
}

namespace cvn73100::ui {

// The control's host services in a Qt Widgets program: message boxes placed by the control's
// geometry, the message-with-option dialog, file dialogs, the clipboard, event processing during
// long work, the property-change notice as a signal, and the property frame.
//
// A program makes one, after its QApplication, and installs it with Host::SetCurrent (Install does
// both steps). Window handles the control passes around are the addresses of live QWidgets
// (HandleOf); a handle that names no live widget counts as none.
class QtHost : public QObject, public Host {
  Q_OBJECT
 public:
  explicit QtHost(QObject* parent = nullptr);
  // Restores the silent host when this one is installed.
  ~QtHost() override;

  // Makes this the process's host.
  void Install();

  static WindowHandle HandleOf(const QWidget* widget);
  // The live widget `handle` names, or null.
  static QWidget* WidgetOf(WindowHandle handle);
  // A window's rectangle on the screen: a top-level window's frame, a child widget's own area.
  static Rect ScreenRectOf(const QWidget* widget);

  // The control whose property frame ShowPropertyPages opens, and the window the frame belongs to.
  // The control widget names itself when it is made and when it asks for its pages; the last one
  // named wins. Cleared with (nullptr, nullptr).
  void SetPropertyPageControl(Cvn73100Scope* control, QWidget* owner);
  Cvn73100Scope* PropertyPageControl() const { return m_pageControl; }
  // Clears the property-page control when it is `control` (a widget going away).
  void ForgetPropertyPageControl(const Cvn73100Scope* control);

  // Run mode (true) or design mode (false), as the control reads it through AmbientUserMode.
  void SetUserMode(bool userMode) { m_userMode = userMode; }

  // --- Host ---

  int MsgBox(WindowHandle parent, const std::string& prompt, int style, const std::string& title) override;
  int MsgBoxPlaced(WindowHandle parent, const std::string& prompt, int style, const std::string& title,
                   const Placement& place, const std::string& helpFile, int helpContext) override;
  MessageOptionResult ShowMessageOption(const MessageOptionRequest& request) override;
  std::optional<FileDialogResult> GetOpenFileName(const FileDialogRequest& request) override;
  std::optional<FileDialogResult> GetSaveFileName(const FileDialogRequest& request) override;
  void SetClipboardText(const std::string& text) override;
  std::string ClipboardText() override;
  // Repaints and runs timers; the user's input waits until the long work is over.
  void ProcessEvents() override;
  void PropertyChanged(const std::string& name) override;
  bool AmbientUserMode() override { return m_userMode; }
  void ShowPropertyPages(const std::vector<std::string>& pages, int initialPage) override;
  // The primary screen's size; the offscreen platform reports its virtual screen.
  std::pair<int, int> ScreenSizeInPixels() override;
  void ShowAboutBox(const std::string& title, const std::vector<std::string>& lines) override;

 signals:
  // The control's property `name` changed (the host's form is now changed).
  void propertyChanged(const QString& name);
  // A modal box or dialog of this host is on the screen, placed where it will stay; it closes when
  // its exec returns. Lets a program (or a test) watch or answer it.
  void dialogShown(QDialog* dialog);

 private:
  // Emits dialogShown for `dialog` once its exec() runs.
  void AnnounceShown(QDialog* dialog);
  int ShowBox(QWidget* parent, const std::string& prompt, int style, const std::string& title, const Placement& place);
  std::optional<FileDialogResult> RunFileDialog(const FileDialogRequest& request, bool save);

  bool m_userMode = true;
  Cvn73100Scope* m_pageControl = nullptr;
  QPointer<QWidget> m_pageOwner;
};

}  // namespace cvn73100::ui
