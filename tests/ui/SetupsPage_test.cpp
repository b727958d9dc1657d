// The Setups page on the simulated instrument: filled from its behaviour, every button, key and menu
// entry driven by clicks, with the host's boxes and file dialogs answered by the script and the Add /
// Edit dialog answered on the screen; Apply and Cancel through the property frame; the language's texts.
#include "ui/SetupsPage.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QFontInfo>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

#include "control/Cvn73100Scope.h"
#include "setups/SetupsCvn73100Scope.h"
#include "tests/support/ScriptedHost.h"
#include "tests/ui/FrameTestSupport.h"
#include "ui/FrmSetupDialog.h"
#include "ui/PropertyFrame.h"

namespace cvn73100::ui {
namespace {

// Answers the Add / Edit dialog that the next click opens: types the texts and presses OK.
void AnswerSetupForm(const QString& name, const QString& comments, bool fetch) {
  test::AnswerNextModal<FrmSetupDialog>([=](FrmSetupDialog* dialog) {
    dialog->findChild<QLineEdit*>("Name")->setText(name);
    dialog->findChild<QLineEdit*>("Comments")->setText(comments);
    dialog->findChild<QCheckBox*>("GetSetupFromInstrument")->setChecked(fetch);
    QTest::mouseClick(dialog->findChild<QPushButton*>("OK"), Qt::LeftButton);
  });
}

// Picks the entry `objectName` of the pop-up menu that the next click opens.
void AnswerPopupMenu(const QString& objectName) {
  test::AnswerNextModal<QMenu>([objectName](QMenu* menu) {
    for (QAction* action : menu->actions()) {
      if (action->objectName() == objectName) {
        menu->setActiveAction(action);
        QTest::keyClick(menu, Qt::Key_Return);
        return;
      }
    }
    menu->close();
  });
}

class SetupsPageTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // As a host does once it has loaded the form: the connection may open on demand.
    Control().AmbientChanged();
    Control().SetAddress("GPIB0::7::INSTR");
    folder.setAutoRemove(true);
  }

  Cvn73100Scope& Control() { return *components.control; }
  SetupsCvn73100Scope& ControlSetups() { return *Control().Setups(); }
  // The page bound to the control, on the screen.
  SetupsPage& Page() {
    if (!page) {
      page = std::make_unique<SetupsPage>();
      page->Bind(&Control());
      page->resize(640, 400);
      page->show();
    }
    return *page;
  }
  QTreeWidget* List() { return Page().findChild<QTreeWidget*>("ListViewSetup"); }
  QPushButton* Button(const char* name) { return Page().findChild<QPushButton*>(name); }
  void Click(const char* name) { QTest::mouseClick(Button(name), Qt::LeftButton); }
  void ClickRow(int row, Qt::MouseButton button = Qt::LeftButton) {
    QTreeWidget* list = List();
    QTest::mouseClick(list->viewport(), button, {}, list->visualItemRect(list->topLevelItem(row)).center());
  }
  QStringList Column(int column) { return test::Column(List(), column); }
  // The rows that carry the current-setup mark.
  QStringList MarkedRows() {
    QStringList marked;
    for (int i = 0; i < List()->topLevelItemCount(); ++i) {
      QTreeWidgetItem* item = List()->topLevelItem(i);
      if (item->data(0, Qt::UserRole).toString() == Cvn73100PPSetup::CURRENT_SETUP_ICON) marked << item->text(0);
    }
    return marked;
  }
  void AddToControl(const char* name, const char* comments) { ControlSetups().Add(name)->SetComments(comments); }

  test::ControlFixture components;
  test::ScriptedHost host;
  test::ScopedHost scopedHost{host};
  std::unique_ptr<SetupsPage> page;
  QTemporaryDir folder;
};

TEST_F(SetupsPageTest, ButtonsFollowTheSelectedSetup) {
  AddToControl("Empty", "");
  AddToControl("Held", "");
  ControlSetups().item("Held")->GetFromInstrument();
  const auto enabled = [this] {
    std::string e;
    for (const char* name : {"CommandAdd", "CommandRemove", "CommandGetFromInstrument", "CommandSendToInstrument",
                             "CommandSendToFile", "CommandGetFromFile"})
      e += Button(name)->isEnabled() ? '1' : '0';
    return e;
  };
  ClickRow(1);
  EXPECT_EQ(enabled(), "111111");
  ClickRow(0);
  EXPECT_EQ(enabled(), "111001") << "nothing to send or save";
  Click("CommandRemove");
  EXPECT_EQ(test::Column(List(), 0), QStringList({"Held"}));
}

// Each button and key reaches the page's behaviour; what the behaviour then does is its own test's.
TEST_F(SetupsPageTest, EveryButtonAndKeyForwards) {
  AnswerSetupForm("Bench1", "probe check", true);
  Click("CommandAdd");
  EXPECT_EQ(Column(0), QStringList({"Bench1"}));
  EXPECT_EQ(MarkedRows(), QStringList({"Bench1"}));
  EXPECT_TRUE(Page().Changed());

  ClickRow(0);
  host.msgBoxAnswers = {MsgBoxResult::Cancel};
  Click("CommandGetFromInstrument");
  Click("CommandSendToInstrument");
  ASSERT_EQ(host.boxes.size(), 2u);
  EXPECT_EQ(host.boxes[0].title, "Getting Setup");
  EXPECT_EQ(host.boxes[1].title, "Send Setup");

  const std::string path = QDir(folder.path()).filePath("Saved.scp").toStdString();
  host.saveFileAnswers = {FileDialogResult{path, 2}};
  Click("CommandSendToFile");
  EXPECT_EQ(host.saveFileRequests.at(0).fileName, "Bench1");
  host.openFileAnswers = {FileDialogResult{path, 2}};
  Click("CommandGetFromFile");
  EXPECT_EQ(Column(0), QStringList({"Bench1", "Saved"}));

  host.ClearRecords();
  ClickRow(1);
  QTest::keyClick(List(), Qt::Key_Delete);
  EXPECT_EQ(host.boxes.at(0).title, "Remove Setup");
  EXPECT_EQ(Column(0), QStringList({"Bench1"}));
}

TEST_F(SetupsPageTest, PopupMenuCopiesTheNameAndEditsTheSetup) {
  AddToControl("Rise", "fast edge");
  AnswerPopupMenu("Copy");
  ClickRow(0, Qt::RightButton);
  EXPECT_EQ(host.clipboard, "Rise");

  test::AnswerNextModal<FrmSetupDialog>([](FrmSetupDialog* dialog) {
    EXPECT_FALSE(dialog->findChild<QCheckBox*>("GetSetupFromInstrument")->isVisible());
    EXPECT_EQ(dialog->findChild<QLineEdit*>("Comments")->text(), "fast edge");
    dialog->findChild<QLineEdit*>("Name")->setText("Rise 2");  // refused: the dialog stays open
    QTest::mouseClick(dialog->findChild<QPushButton*>("OK"), Qt::LeftButton);
    EXPECT_TRUE(dialog->isVisible());
    dialog->findChild<QLineEdit*>("Name")->setText("Rise2");
    QTest::mouseClick(dialog->findChild<QPushButton*>("OK"), Qt::LeftButton);
  });
  AnswerPopupMenu("Edit");
  ClickRow(0, Qt::RightButton);
  EXPECT_EQ(Column(0), QStringList({"Rise2"}));
}

TEST_F(SetupsPageTest, TheFrameAppliesOrCancelsTheWorkingCopy) {
  for (const bool apply : {false, true}) {
    SCOPED_TRACE(apply ? "Apply" : "Cancel");
    PropertyFrame frame(Control(), {Cvn73100Scope::PAGE_SETUPS}, 0);
    frame.show();
    auto* setups = qobject_cast<SetupsPage*>(frame.PageNamed(Cvn73100Scope::PAGE_SETUPS));
    ASSERT_NE(setups, nullptr);
    EXPECT_FALSE(frame.ApplyButton()->isEnabled());
    AnswerSetupForm(apply ? "Kept" : "Dropped", "", false);
    QTest::mouseClick(setups->findChild<QPushButton*>("CommandAdd"), Qt::LeftButton);
    EXPECT_TRUE(frame.ApplyButton()->isEnabled());
    QTest::mouseClick(apply ? frame.ApplyButton() : frame.CancelButton(), Qt::LeftButton);
  }
  ASSERT_EQ(ControlSetups().Count(), 1);
  EXPECT_EQ(ControlSetups().item(1)->Name(), "Kept");
}

TEST_F(SetupsPageTest, TextsAndFontFollowTheLanguage) {
  Control().SetCountryCode(82);
  EXPECT_EQ(Page().Caption(), "셋업");
  EXPECT_EQ(Button("CommandSendToFile")->text(), "다른 이름으로 저장");
  EXPECT_EQ(List()->headerItem()->text(0), "이름");
  EXPECT_EQ(QFontInfo(Button("CommandAdd")->font()).family(), "Noto Sans CJK KR");
}

}  // namespace
}  // namespace cvn73100::ui
