#include "ui/ScreenshotTour.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QCursor>
#include <QEventLoop>
#include <QFile>
#include <QFileDialog>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QTabWidget>
#include <QTreeWidget>
#include <cstdio>

#include "control/Cvn73100Scope.h"
#include "dialogs/Messages.h"
#include "discovery/FrmSearchResults.h"
#include "platform/Host.h"
#include "setups/SetupsCvn73100Scope.h"
#include "ui/FrmAboutDialog.h"
#include "ui/FrmSearchResultsDialog.h"
#include "ui/FrmSetupDialog.h"
#include "ui/MessageOptionDialog.h"
#include "ui/PropertyFrame.h"
#include "ui/QtHost.h"
#include "ui/ScopeMainWindow.h"
#include "ui/SetupsPage.h"
#include "ui/UiText.h"

namespace cvn73100::ui {
namespace {

constexpr int POLL_MS = 30;
// How long a window stays up before the tour acts on it: long enough to be laid out and painted.
constexpr int SHOWN_MS = 250;
// A window nobody expected is photographed and closed after this long.
constexpr int STUCK_MS = 8000;
// The longest a search on the Search Instruments page may take.
constexpr int SEARCH_LIMIT_MS = 60000;

void ClickAccept(QMessageBox* box) {
  for (QAbstractButton* button : box->buttons()) {
    if (box->buttonRole(button) == QMessageBox::AcceptRole) {
      button->click();
      return;
    }
  }
  box->accept();
}

template <class T>
T* Child(QWidget* parent, const char* name) {
  T* child = parent->findChild<T*>(name);
  if (!child) std::fprintf(stderr, "cvnscope-tour: no %s in %s\n", name, qPrintable(parent->objectName()));
  return child;
}

void Click(QWidget* parent, const char* name) {
  if (auto* button = Child<QAbstractButton>(parent, name)) button->click();
}

// Names `path` in a file dialog as a user would type it. (selectFile leaves the name box alone while it
// has the focus, and an open dialog with an empty name box only changes folder.)
void ChooseFile(QFileDialog* dialog, const QString& path) {
  dialog->selectFile(path);
  if (auto* name = dialog->findChild<QLineEdit*>("fileNameEdit")) name->setText(path);
}

QPixmap WithTitleBar(const QPixmap& picture, const QWidget* window) {
  QFont font = window->font();
  font.setBold(true);
  const QFontMetrics metrics(font);
  const int bar = metrics.height() + 12;
  const qreal ratio = picture.devicePixelRatio();
  const QSize size = picture.deviceIndependentSize().toSize();
  QPixmap framed(QSize(size.width() + 2, size.height() + bar + 1) * ratio);
  framed.setDevicePixelRatio(ratio);
  framed.fill(QColor(72, 80, 94));
  QPainter painter(&framed);
  painter.drawPixmap(1, bar, picture);
  painter.setFont(font);
  painter.setPen(Qt::white);
  painter.drawText(QRect(10, 0, size.width() - 20, bar), Qt::AlignVCenter | Qt::AlignLeft,
                   metrics.elidedText(window->windowTitle(), Qt::ElideRight, size.width() - 20));
  return framed;
}

void FillSetupForm(FrmSetupDialog* dialog, const QString& name, const QString& comments, bool fetch) {
  if (auto* edit = Child<QLineEdit>(dialog, "Name")) edit->setText(name);
  if (auto* edit = Child<QLineEdit>(dialog, "Comments")) edit->setText(comments);
  if (auto* check = Child<QCheckBox>(dialog, "GetSetupFromInstrument")) check->setChecked(fetch);
}

}  // namespace

ScreenshotTour::ScreenshotTour(ScopeMainWindow& window, const QString& folder, const QString& language)
    : m_window(window), m_folder(folder), m_language(language) {
  m_poll.setInterval(POLL_MS);
  connect(&m_poll, &QTimer::timeout, this, &ScreenshotTour::Poll);
}

void ScreenshotTour::Start() {
  m_folder.mkpath(".");
  m_poll.start();
  QTimer::singleShot(SHOWN_MS, this, &ScreenshotTour::Run);
}

void ScreenshotTour::Run() {
  TourMainWindow();
  TourSetupsPage();
  TourAllPages();
  TourSearchResults();
  TourAbout();
  // The form the tour made, in the file format cvnscope reads.
  if (!m_window.SaveForm(m_folder.absoluteFilePath("form.json"))) Fail("the form could not be saved");
  std::printf("cvnscope-tour: screenshots in %s, %d problem(s)\n", qPrintable(m_folder.absolutePath()), m_failures);
  QCoreApplication::exit(m_failures == 0 ? 0 : 1);
}

// --- The stops of the tour. ---

void ScreenshotTour::TourMainWindow() {
  m_window.InitializeInstrument();
  m_window.SetCommand("*IDN?");
  m_window.SendCommand(true);
  m_window.SetCommand(":TIMebase:RANGe?");
  m_window.SendCommand(true);
  m_window.CaptureWaveform();
  m_window.FetchScreenImage();
  Settle();
  Save(&m_window, "gui-main");
}

void ScreenshotTour::TourSetupsPage() {
  const QString setupFile = m_folder.absoluteFilePath("Bench1.scp");
  QFile::remove(setupFile);
  Expect<PropertyFrame>("the property frame on Setups", [this, setupFile](PropertyFrame* frame) {
    auto* page = qobject_cast<SetupsPage*>(frame->PageNamed(Cvn73100Scope::PAGE_SETUPS));
    if (!page) {
      Fail("the frame has no Setups page");
      frame->reject();
      return;
    }
    frame->Tabs()->setCurrentWidget(page);

    // A setup fetched from the instrument as it is added, and one left empty.
    Expect<FrmSetupDialog>("Add New Setup", [this](FrmSetupDialog* dialog) {
      FillSetupForm(dialog, "Bench1", "1 kHz probe compensation", true);
      Save(dialog, "setup-add");
      Click(dialog, "OK");
    });
    Click(page, "CommandAdd");
    Expect<FrmSetupDialog>("Add New Setup (second)", [](FrmSetupDialog* dialog) {
      FillSetupForm(dialog, "Bench2", "Spare", false);
      Click(dialog, "OK");
    });
    Click(page, "CommandAdd");

    // A name the form refuses keeps the dialog open.
    Expect<FrmSetupDialog>("Add New Setup (bad name)", [this](FrmSetupDialog* dialog) {
      FillSetupForm(dialog, "Rise time", "", false);
      Expect<QMessageBox>("Setup Name Format", [this](QMessageBox* box) {
        Save(box, "setup-name-format");
        ClickAccept(box);
      });
      Click(dialog, "OK");
      Settle();
      if (!dialog->isVisible()) Fail("the Add New Setup dialog closed on a refused name");
      Click(dialog, "Cancel");
    });
    Click(page, "CommandAdd");

    if (auto* list = Child<QTreeWidget>(page, "ListViewSetup"); list && list->topLevelItemCount() > 0) {
      list->setCurrentItem(list->topLevelItem(0));
    }
    Settle();
    Save(frame, "setups");

    // Save As into the screenshot folder, then Send back to the instrument.
    Expect<QFileDialog>("Save Setup File", [this, setupFile](QFileDialog* dialog) {
      ChooseFile(dialog, setupFile);
      Settle();
      Save(dialog, "setups-save");
      static_cast<QDialog*>(dialog)->accept();  // QFileDialog::accept, which checks the name
    });
    Click(page, "CommandSendToFile");
    if (!QFile::exists(setupFile)) Fail("Save As wrote no setup file");

    Expect<QMessageBox>("Send Setup", [this](QMessageBox* box) {
      Save(box, "setups-send");
      ClickAccept(box);
    });
    Click(page, "CommandSendToInstrument");

    // Opening the file again finds its setup name taken and asks before overwriting.
    Expect<QFileDialog>("Open Setup File", [setupFile](QFileDialog* dialog) {
      ChooseFile(dialog, setupFile);
      static_cast<QDialog*>(dialog)->accept();  // QFileDialog::accept, which checks the name
    });
    Expect<QMessageBox>("Open Setup File (overwrite)", [this](QMessageBox* box) {
      Save(box, "setups-open-overwrite");
      ClickAccept(box);
    });
    Click(page, "CommandGetFromFile");

    // The list's pop-up menu, over the row it was opened on.
    if (auto* list = Child<QTreeWidget>(page, "ListViewSetup"); list && list->topLevelItemCount() > 0) {
      const QRect row = list->visualItemRect(list->topLevelItem(0));
      const QPoint local = row.center();
      const QPoint global = list->viewport()->mapToGlobal(local);
      QCursor::setPos(global);
      Expect<QMenu>("the Setups pop-up menu", [this, frame](QMenu* menu) {
        Save(frame, "setups-menu", frame->frameGeometry().united(menu->geometry()));
        menu->close();
      });
      QMouseEvent press(QEvent::MouseButtonPress, local, global, Qt::RightButton, Qt::RightButton, Qt::NoModifier);
      QMouseEvent release(QEvent::MouseButtonRelease, local, global, Qt::RightButton, Qt::NoButton, Qt::NoModifier);
      QApplication::sendEvent(list->viewport(), &press);
      QApplication::sendEvent(list->viewport(), &release);
    }

    frame->OkButton()->click();
  });
  m_window.ShowPages(Cvn73100_ShowPropertyPage_Setups);
  const auto setups = m_window.Scope().Setups();
  const auto holds = [&setups](const char* name) {
    try {
      return setups && setups->item(name) != nullptr;
    } catch (const std::exception&) {
      return false;
    }
  };
  if (!holds("Bench1") || !holds("Bench2")) Fail("OK did not hand the new setups to the control");
}

void ScreenshotTour::TourAllPages() {
  Expect<PropertyFrame>("the property frame with every page", [this](PropertyFrame* frame) {
    const struct {
      const char* className;
      const char* picture;
    } pages[] = {{Cvn73100Scope::PAGE_SEARCH_IO, "tour-search-instruments"},
                 {Cvn73100Scope::PAGE_SEARCH_CRITERIA, "tour-search-criteria"},
                 {Cvn73100Scope::PAGE_SET_IO, "tour-set-io"}};
    for (const auto& page : pages) {
      PropertyPage* shown = frame->PageNamed(page.className);
      if (!shown) {
        Fail(QString("the frame has no %1 page").arg(page.className));
        continue;
      }
      frame->Tabs()->setCurrentWidget(shown);
      Settle(300);
      if (page.className == std::string(Cvn73100Scope::PAGE_SEARCH_IO)) {
        // A search, so the list shows the instruments the I/O library reaches.
        if (auto* search = shown->findChild<QPushButton*>("Search")) {
          search->click();
          QElapsedTimer searching;
          searching.start();
          Settle(300);
          while ((!search->isEnabled() || QApplication::overrideCursor()) && searching.elapsed() < SEARCH_LIMIT_MS) {
            Settle(100);
          }
          Settle(300);
        }
      }
      Save(frame, page.picture);
    }
    frame->CancelButton()->click();
  });
  m_window.ShowPages(Cvn73100_ShowPropertyPage_Default);
}

void ScreenshotTour::TourSearchResults() {
  // A search that heard an instrument on COM1 only, with COM3 already left out of searches.
  FrmSearchResults results;
  for (std::int32_t i = 0; i < FrmSearchResults::COM_PORT_COUNT; ++i) {
    results.SetInstrumentFoundOnCOMPort(i, i == 0);
    results.SetIncludedCOMPort(i, i != 2);
  }
  results.Update();
  results.Show();
  Expect<FrmSearchResultsDialog>("Search Instruments Results", [this](FrmSearchResultsDialog* dialog) {
    Save(dialog, "search-results");
    Click(dialog, "Continue");
  });
  FrmSearchResultsDialog::ShowModal(results, &m_window);

  MessageOptionRequest request;
  request.parent = QtHost::HandleOf(&m_window);
  request.title = Messages::Load(280);
  request.message = Messages::Load(282) + "\r\n\r\n" + Messages::Load(283) + "\r\n" + Messages::Load(284) + "\r\n" +
                    Messages::Load(285) + "\r\n" + Messages::Load(286);
  request.option = Messages::Load(289);
  request.continueCancel = true;
  Expect<MessageOptionDialog>("the message with an option", [this](MessageOptionDialog* dialog) {
    Save(dialog, "tour-message-option");
    dialog->reject();
  });
  Host::Current().ShowMessageOption(request);
}

void ScreenshotTour::TourAbout() {
  Expect<FrmAboutDialog>("About", [this](FrmAboutDialog* dialog) {
    Save(dialog, "about");
    Click(dialog, "OK");
  });
  m_window.ShowAbout();
}

// --- Answering windows. ---

void ScreenshotTour::Expect(const QString& what, Match match, Answer answer) {
  m_expected.push_back(Expectation{what, std::move(match), std::move(answer)});
}

void ScreenshotTour::Poll() {
  QWidget* shown = QApplication::activePopupWidget();
  if (!shown) shown = QApplication::activeModalWidget();
  if (!shown || !shown->isVisible()) {
    m_seen = nullptr;
    return;
  }
  if (shown != m_seen) {
    m_seen = shown;
    m_seenFor.start();
    m_stuckFor.start();
    return;
  }
  if (m_seenFor.elapsed() < SHOWN_MS) return;
  if (!m_expected.empty() && m_expected.front().match(shown)) {
    Expectation next = std::move(m_expected.front());
    m_expected.pop_front();
    m_seen = nullptr;
    // Answered outside this timer's slot: the answer opens windows of its own, and the timer must keep
    // running in their event loops.
    QPointer<QWidget> target(shown);
    m_answering.append(target);
    QTimer::singleShot(0, this, [this, target, next] {
      if (target) next.answer(target);
      m_answering.removeAll(target);
      m_answering.removeAll(nullptr);
    });
    return;
  }
  if (m_answering.contains(shown)) return;
  // A search may end with the results dialog whenever a COM port on this computer stayed silent.
  if (auto* results = qobject_cast<FrmSearchResultsDialog*>(shown)) {
    Save(results, "search-results-live");
    Click(results, "Continue");
    m_seen = nullptr;
    return;
  }
  // Windows the tour is busy in (a frame it is clicking through) stay; anything else that lingers is
  // unexpected: photographed and closed, so the tour can go on.
  if (m_stuckFor.elapsed() < STUCK_MS) return;
  const QString name = QString("unexpected-%1").arg(++m_unexpected);
  Save(shown, name);
  Fail(QString("an unexpected window stayed open: \"%1\"%2")
           .arg(shown->windowTitle())
           .arg(m_expected.empty() ? QString() : " while waiting for " + m_expected.front().what));
  if (auto* box = qobject_cast<QMessageBox*>(shown)) {
    std::fprintf(stderr, "  %s\n", qPrintable(box->text()));
    ClickAccept(box);
  } else if (auto* dialog = qobject_cast<QDialog*>(shown)) {
    dialog->reject();
  } else {
    shown->close();
  }
  m_seen = nullptr;
}

void ScreenshotTour::Save(QWidget* widget, const QString& name, const QRect& screenArea) {
  QPixmap picture;
  if (screenArea.isValid()) {
    if (QScreen* screen = widget->screen()) {
      picture = screen->grabWindow(0, screenArea.x(), screenArea.y(), screenArea.width(), screenArea.height());
    }
  }
  if (picture.isNull()) picture = widget->grab();
  // Without a window manager windows have no title bar; draw one, since titles are part of the look.
  if (widget->isWindow() && !screenArea.isValid() && !qobject_cast<QMenu*>(widget))
    picture = WithTitleBar(picture, widget);
  const QString path = m_folder.absoluteFilePath(QString("%1-%2.png").arg(name, m_language));
  if (!picture.save(path, "PNG")) {
    Fail("could not write " + path);
    return;
  }
  std::printf("cvnscope-tour: %s\n", qPrintable(path));
  std::fflush(stdout);
}

void ScreenshotTour::Fail(const QString& why) {
  ++m_failures;
  std::fprintf(stderr, "cvnscope-tour: %s\n", qPrintable(why));
}

void ScreenshotTour::Settle(int milliseconds) {
  QEventLoop loop;
  QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
  loop.exec();
}

}  // namespace cvn73100::ui
