#pragma once
#include <QDir>
#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QRect>
#include <QString>
#include <QTimer>
#include <deque>
#include <functional>

class QWidget;

namespace cvn73100::ui {

class ScopeMainWindow;

// cvnscope-tour DIR: walks through the window, every property page and every dialog of
// the control against the instrument the form names (the embedded simulated one by default), answers
// the dialogs itself and saves a picture of each as DIR/<name>-<language>.png. On the way the Setups
// page fetches a setup from the instrument, saves it to a file in DIR and sends it back, and the form
// the tour leaves behind is written to DIR/form.json (the form file itself is not touched). The I/O
// pages and the message-with-option dialog are saved as "tour-..." pictures. A window the tour
// did not expect is photographed as "unexpected-N" and closed after a few seconds. Ends the program
// when done: exit status 0, or 1 when anything went wrong.
class ScreenshotTour : public QObject {
  Q_OBJECT
 public:
  // `language` is the suffix of the file names ("en", "ko").
  ScreenshotTour(ScopeMainWindow& window, const QString& folder, const QString& language);

  // Starts once the event loop runs.
  void Start();
  int Failures() const { return m_failures; }

 private:
  using Match = std::function<bool(QWidget*)>;
  using Answer = std::function<void(QWidget*)>;
  struct Expectation {
    QString what;
    Match match;
    Answer answer;
  };

  void Run();
  void TourMainWindow();
  void TourSetupsPage();
  void TourAllPages();
  void TourSearchResults();
  void TourAbout();

  // Runs `answer` on the next modal window (or pop-up menu) `match` accepts, once it has been on the
  // screen for a moment. Expectations are met in the order they were made.
  void Expect(const QString& what, Match match, Answer answer);
  template <class T>
  void Expect(const QString& what, std::function<void(T*)> answer) {
    Expect(
        what, [](QWidget* widget) { return qobject_cast<T*>(widget) != nullptr; },
        [answer](QWidget* widget) { answer(qobject_cast<T*>(widget)); });
  }
  void Poll();
  // Saves `widget` as <name>-<language>.png; with a `screenArea`, that part of the screen instead (so a
  // menu over the window shows too).
  void Save(QWidget* widget, const QString& name, const QRect& screenArea = QRect());
  void Fail(const QString& why);
  static void Settle(int milliseconds = 150);

  ScopeMainWindow& m_window;
  QDir m_folder;
  QString m_language;
  QTimer m_poll;
  std::deque<Expectation> m_expected;
  // Windows an answer is working in: never taken for unexpected ones.
  QList<QPointer<QWidget>> m_answering;
  QPointer<QWidget> m_seen;
  QElapsedTimer m_seenFor;
  QElapsedTimer m_stuckFor;
  int m_failures = 0;
  int m_unexpected = 0;
};

}  // namespace cvn73100::ui
