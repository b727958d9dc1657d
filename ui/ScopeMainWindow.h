#pragma once
#include <QMainWindow>
#include <QPixmap>
#include <QString>

#include "platform/PropertyBag.h"

class QChartView;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace cvn73100 {
class Cvn73100Scope;
}

namespace cvn73100::ui {

class Cvn73100ScopeWidget;

// The window of cvnscope-gui: a form holding the control, with buttons for its property pages,
// Initialize and About, a command line to the instrument, a waveform capture drawn as a chart and the
// instrument's screen image. The control's properties come from the form file when the window opens
// and go back to it when the window closes, so cvnscope and cvnscope-gui share one configuration.
//
// Child object names: "CommandPages0".."CommandPages3", "CommandInitialize", "CommandAbout",
// "TextCommand", "CommandOutput", "CommandQuery", "TextReply", "ComboChannel", "ComboPoints",
// "CommandCapture", "ChartWaveform", "CommandScreenImage", "PictureScreen".
class ScopeMainWindow : public QMainWindow {
  Q_OBJECT
 public:
  // `formPath` is the form file (read here); an empty path keeps the control's defaults and saves
  // nothing.
  explicit ScopeMainWindow(QString formPath, QWidget* parent = nullptr);
  ~ScopeMainWindow() override;

  Cvn73100ScopeWidget& ScopeWidget() const { return *m_scopeWidget; }
  Cvn73100Scope& Scope() const;

  // Whether closing the window writes the control's properties to the form file (on by default).
  void SetSaveOnClose(bool save) { m_bSaveOnClose = save; }
  // Writes the control's properties to the form file (or to `path`); false (and a message) when that
  // failed.
  bool SaveForm(const QString& path = QString());

  // --- The window's actions, as its buttons run them. Errors are shown, not raised. ---
  void ShowPages(int selector);
  void InitializeInstrument();
  // Sends the command line's text; with `readReply`, reads the instrument's reply into the reply box.
  void SendCommand(bool readReply);
  // Puts `command` in the command line.
  void SetCommand(const QString& command);
  void CaptureWaveform();
  void FetchScreenImage();
  void ShowAbout();

 protected:
  void closeEvent(QCloseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void LoadForm();
  void ShowScreenPixmap();
  void Report(const QString& text);
  // Runs `action`; an error is shown in a box over the window and in the status bar.
  template <class F>
  bool Try(F action);

  QString m_formPath;
  MemoryPropertyBag m_formAsRead;  // what this window last read or saved, against which its changes count
  bool m_bSaveOnClose = true;
  Cvn73100ScopeWidget* m_scopeWidget = nullptr;
  QLineEdit* m_command = nullptr;
  QPlainTextEdit* m_reply = nullptr;
  QComboBox* m_channel = nullptr;
  QComboBox* m_points = nullptr;
  QChartView* m_chart = nullptr;
  QLabel* m_screen = nullptr;
  QPixmap m_screenPixmap;
};

}  // namespace cvn73100::ui
