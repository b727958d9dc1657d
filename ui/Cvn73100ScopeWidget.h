#pragma once
#include <QTimer>
#include <QWidget>
#include <memory>
#include <vector>

#include "platform/Event.h"

class QLabel;

namespace cvn73100 {
class Cvn73100Scope;
}

namespace cvn73100::ui {

// The control as a host places it on a form: it owns the Cvn73100Scope and shows its face (the
// control's name, the active address, whether the instrument is connected, and the instrument's
// identity). Layout after a resize waits for the resize timer, which stops itself on its first tick,
// so dragging a form's edge lays the face out once when it settles.
//
// Making one makes the control, so the I/O library and the automation server must be registered
// with Components first (the control raises otherwise).
class Cvn73100ScopeWidget : public QWidget {
  Q_OBJECT
 public:
  static constexpr int RESIZE_DELAY_MS = 100;

  explicit Cvn73100ScopeWidget(QWidget* parent = nullptr);
  ~Cvn73100ScopeWidget() override;

  Cvn73100Scope& Scope() const { return *m_scope; }

  // The control's ShowPropertyPages with this widget as the frame's owner; the face is refreshed
  // afterwards. Errors of the control (an unknown selector) reach the caller.
  void ShowPropertyPages(int selector = 0);
  // Reads the face's texts from the control again.
  void Refresh();

  QTimer& ResizeTimer() { return m_resizeTimer; }
  // How often the face has been laid out (for tests of the resize timer).
  int LayoutCount() const { return m_layoutCount; }

  QSize sizeHint() const override;

 signals:
  // The control's support message, as it formats it.
  void supportMessage(const QString& block);

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void LayOut();
  void OnPropertyChanged(const QString& name);
  void ApplyFont();

  std::unique_ptr<Cvn73100Scope> m_scope;
  std::vector<EventConnection> m_connections;
  QTimer m_resizeTimer;
  int m_layoutCount = 0;
  QLabel* m_name = nullptr;
  QLabel* m_state = nullptr;
  QLabel* m_address = nullptr;
  QLabel* m_identity = nullptr;
  QString m_addressText;
  QString m_identityText;
};

}  // namespace cvn73100::ui
