#pragma once
#include <QObject>
#include <functional>

class QSocketNotifier;

namespace cvn73100::ui {

// Turns SIGTERM and SIGINT into a call of `quit` on the event loop, so that a program stopped by its
// session or by Ctrl-C leaves the way its window's close does. A second signal while the first is being
// handled ends the program at once.
class QuitOnSignal : public QObject {
 public:
  explicit QuitOnSignal(std::function<void()> quit, QObject* parent = nullptr);
  ~QuitOnSignal() override;
  QuitOnSignal(const QuitOnSignal&) = delete;
  QuitOnSignal& operator=(const QuitOnSignal&) = delete;

 private:
  std::function<void()> m_quit;
  QSocketNotifier* m_notifier = nullptr;
};

}  // namespace cvn73100::ui
