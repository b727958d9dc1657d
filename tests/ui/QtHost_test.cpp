// The Qt host's services: boxes placed by the control's geometry, their styles and answers, the
// message-with-option dialog in both modes, file dialogs, and the small services.
#include "ui/QtHost.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QCheckBox>
#include <QClipboard>
#include <QFileDialog>
#include <QGuiApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <optional>

#include "dialogs/AutoCenter.h"
#include "dialogs/Messages.h"
#include "tests/ui/FrameTestSupport.h"
#include "ui/DialogPlacement.h"
#include "ui/MessageOptionDialog.h"

namespace cvn73100::ui {
namespace {

class QtHostTest : public ::testing::Test {
 protected:
  void SetUp() override {
    Messages::SetLanguageBase(Messages::ENGLISH);
    host.Install();
  }

  // A top-level window at `rect` (frame included) for boxes to centre on.
  std::unique_ptr<QWidget> Window(const QRect& rect) {
    auto window = std::make_unique<QWidget>();
    window->setGeometry(rect);
    window->show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    return window;
  }

  void OnNextDialog(std::function<void(QDialog*)> answer) { test::OnNextDialog(host, std::move(answer)); }

  QtHost host;
};

TEST_F(QtHostTest, MessageBoxIsCentredOverItsParentAsTheGeometrySays) {
  auto parent = Window(QRect(200, 150, 640, 480));
  QRect placedAt;
  Rect expected;
  OnNextDialog([&](QDialog* box) {
    placedAt = box->frameGeometry();
    expected = AutoCenter::CenterOverParent(ToRect(box->frameGeometry()), QtHost::ScreenRectOf(parent.get()));
    box->accept();
  });
  AutoCenter::MsgBoxAutoCenter(QtHost::HandleOf(parent.get()), "Could not open I/O port.",
                               MsgBoxStyle::OKOnly | MsgBoxStyle::Information, "Search");
  EXPECT_EQ(ToRect(placedAt), expected);
}

TEST_F(QtHostTest, BoxStylesGiveIconsButtonsAndAnswers) {
  struct Case {
    int style;
    QMessageBox::Icon icon;
    QStringList buttons;  // sorted; the last is pressed
    int answer;
  };
  const Case cases[] = {
      {MsgBoxStyle::OKOnly | MsgBoxStyle::Information | MsgBoxStyle::SetForeground,
       QMessageBox::Information,
       {"OK"},
       MsgBoxResult::OK},
      {MsgBoxStyle::OKCancel | MsgBoxStyle::Exclamation, QMessageBox::Warning, {"Cancel", "OK"}, MsgBoxResult::OK}};
  for (const Case& c : cases) {
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QStringList buttons;
    QString text;
    OnNextDialog([&](QDialog* dialog) {
      auto* box = qobject_cast<QMessageBox*>(dialog);
      icon = box->icon();
      text = box->text();
      for (QAbstractButton* button : box->buttons()) buttons << button->text();
      buttons.sort();
      for (QAbstractButton* button : box->buttons())
        if (button->text() == buttons.back()) QTest::mouseClick(button, Qt::LeftButton);
    });
    EXPECT_EQ(host.MsgBox(0, "Line one\r\nLine two", c.style, "Title"), c.answer);
    EXPECT_EQ(icon, c.icon);
    EXPECT_EQ(buttons, c.buttons);
    EXPECT_EQ(text, "Line one\nLine two");
  }
}

TEST_F(QtHostTest, MessageOptionDialogInBothButtonModes) {
  using B = FrmMessageOption::Button;
  struct Case {
    bool continueCancel, tick;
    std::optional<B> press;  // none: Escape
    int button;
  };
  const Case cases[] = {{true, true, B::Continue, MsgBoxResult::OK},
                        {true, false, B::Cancel, MsgBoxResult::Cancel},
                        {false, true, B::OK, MsgBoxResult::OK},
                        {false, false, std::nullopt, MsgBoxResult::OK}};
  auto parent = Window(QRect(300, 200, 500, 400));
  for (const Case& c : cases) {
    MessageOptionRequest request;
    request.parent = QtHost::HandleOf(parent.get());
    request.message = "The Handshake setting for the current COM port is not correct.";
    request.option = "Do not show this message again";
    request.continueCancel = c.continueCancel;
    request.placement = [](const Rect& box, const Rect&) { return Rect{37, 41, box.width, box.height}; };
    QPoint at;
    bool continueShown = false;
    OnNextDialog([&](QDialog* dialog) {
      auto* form = qobject_cast<MessageOptionDialog*>(dialog);
      at = form->frameGeometry().topLeft();
      continueShown = form->Button(B::Continue)->isVisible();
      EXPECT_EQ(form->Button(B::OK)->isVisible(), !c.continueCancel);
      EXPECT_EQ(form->OptionBox()->text(), "Do not show this message again");
      form->OptionBox()->setChecked(c.tick);
      c.press ? QTest::mouseClick(form->Button(*c.press), Qt::LeftButton) : QTest::keyClick(form, Qt::Key_Escape);
    });
    const MessageOptionResult result = host.ShowMessageOption(request);
    EXPECT_EQ(result.button, c.button);
    EXPECT_EQ(result.optionChecked, c.tick);
    EXPECT_EQ(continueShown, c.continueCancel);
    EXPECT_EQ(at, QPoint(37, 41));
  }
}

TEST_F(QtHostTest, FileDialogsTakeFiltersFolderAndNameAndReportTheChoice) {
  QTemporaryDir folder;
  ASSERT_TRUE(folder.isValid());
  FileDialogRequest request;
  request.title = "Save Setup File";
  request.filters = {{"All Scope Files (*.scp; *.stp)", "*.scp;*.stp"}, {"Wrenfold Files (*.stp)", "*.stp"}};
  request.filterIndex = 2;
  request.initialDirectory = folder.path().toStdString();
  request.fileName = "bench.scp";
  QString title;
  QString directory;
  QString selectedFilter;
  OnNextDialog([&](QDialog* dialog) {
    auto* files = qobject_cast<QFileDialog*>(dialog);
    ASSERT_NE(files, nullptr);
    title = files->windowTitle();
    directory = files->directory().absolutePath();
    selectedFilter = files->selectedNameFilter();
    files->selectNameFilter(files->nameFilters().first());
    QMetaObject::invokeMethod(files, "accept");
  });
  const auto result = host.GetSaveFileName(request);
  ASSERT_TRUE(result.has_value());
  EXPECT_EQ(title, "Save Setup File");
  EXPECT_EQ(directory, QDir(folder.path()).absolutePath());
  EXPECT_TRUE(selectedFilter.startsWith("Wrenfold Files (*.stp)")) << selectedFilter.toStdString();
  EXPECT_EQ(result->path, QDir(folder.path()).filePath("bench.scp").toStdString());
  EXPECT_EQ(result->filterIndex, 1);

  OnNextDialog([](QDialog* dialog) { dialog->reject(); });
  EXPECT_FALSE(host.GetOpenFileName(request).has_value());
}

TEST_F(QtHostTest, ClipboardNoticesAndScreen) {
  host.SetClipboardText("Bench 1");
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "Bench 1");
  EXPECT_EQ(host.ClipboardText(), "Bench 1");

  QSignalSpy notices(&host, &QtHost::propertyChanged);
  Host::Current().PropertyChanged("Address");
  ASSERT_EQ(notices.count(), 1);
  EXPECT_EQ(notices.at(0).at(0).toString(), "Address");

  const QSize screen = QGuiApplication::primaryScreen()->size();
  EXPECT_EQ(host.ScreenSizeInPixels(), std::make_pair(screen.width(), screen.height()));

  auto window = Window(QRect(10, 10, 100, 100));
  EXPECT_EQ(QtHost::WidgetOf(QtHost::HandleOf(window.get())), window.get());
  const WindowHandle gone = QtHost::HandleOf(window.get());
  window.reset();
  EXPECT_EQ(QtHost::WidgetOf(gone), nullptr);
}

}  // namespace
}  // namespace cvn73100::ui
