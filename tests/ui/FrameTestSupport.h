#pragma once
#include <QApplication>
#include <QDialog>
#include <QTimer>
#include <QTreeWidget>
#include <QWidget>
#include <functional>
#include <memory>
#include <string>

#include "control/Cvn73100Scope.h"
#include "dialogs/Messages.h"
#include "iolib/BoardMap.h"
#include "iolib/IOManager.h"
#include "platform/Components.h"
#include "tests/support/TempDir.h"
#include "ui/QtHost.h"

namespace cvn73100::test {

// Answers the next pop-up menu or modal window of type T that opens while the test waits in an exec()
// (polling every few milliseconds, so it also finds dialogs that come up in the middle of a click handler).
template <class T>
QTimer* AnswerNextModal(std::function<void(T*)> answer) {
  auto* timer = new QTimer;
  timer->setInterval(5);
  QObject::connect(timer, &QTimer::timeout, [timer, answer] {
    T* modal = qobject_cast<T*>(QApplication::activePopupWidget());
    if (!modal) modal = qobject_cast<T*>(QApplication::activeModalWidget());
    if (!modal || !modal->isVisible()) return;
    timer->stop();
    timer->deleteLater();
    answer(modal);
  });
  timer->start();
  return timer;  // for a test that expects no modal: it deletes the timer itself
}

// Runs `answer` on the next dialog that `host` shows.
inline void OnNextDialog(ui::QtHost& host, const std::function<void(QDialog*)>& answer) {
  auto connection = std::make_shared<QMetaObject::Connection>();
  *connection = QObject::connect(&host, &ui::QtHost::dialogShown, [connection, answer](QDialog* dialog) {
    QObject::disconnect(*connection);
    answer(dialog);
  });
}

// The texts of one column of a list, top to bottom.
inline QStringList Column(const QTreeWidget* list, int column) {
  QStringList texts;
  for (int i = 0; i < list->topLevelItemCount(); ++i) texts << list->topLevelItem(i)->text(column);
  return texts;
}

// A control whose I/O library sees `boardMap` (default: the simulated GPIB bus on GPIB0 and a simulated
// instrument on COM1, nothing on the other COM ports), writing its log under a private temp directory.
class ControlFixture {
 public:
  explicit ControlFixture(const std::string& boardMap =
                              "GPIB0 = sim\nCOM1 = sim\nCOM2 = none\nCOM3 = none\n"
                              "COM4 = none\n") {
    // One folder for the process: the support log may outlive a single control.
    static const ScopedTmpDir tempDir("cvn-ui");
    Messages::SetLanguageBase(Messages::ENGLISH);
    auto manager = std::make_shared<io::IOManager>(io::BoardMap::FromText(boardMap, "test"));
    Components::SetIOManagerFactory([manager] { return manager; });
    control = std::make_unique<Cvn73100Scope>();
    control->SetTXDelay(1);
  }
  ~ControlFixture() {
    control.reset();
    Messages::SetLanguageBase(Messages::ENGLISH);
  }

  std::unique_ptr<Cvn73100Scope> control;
};

}  // namespace cvn73100::test
