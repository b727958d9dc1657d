// The Setups page on the simulated instrument: filled from its behaviour, every button, key and menu
// entry driven by clicks, with the host's boxes and file dialogs answered by the script and the Add /
// Edit dialog answered on the screen; Apply and Cancel through the property frame; the language's texts.
#include "ui/SetupsPage.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QFontInfo>
#include <QGroupBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>
#include <functional>

#include "control/Cvn73100Scope.h"
#include "setups/SetupCvn73100Scope.h"
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
  std::shared_ptr<SetupCvn73100Scope> Working(const std::string& name) {
    return Page().Behaviour().WorkingSetups()->item(name);
  }
  void AddToControl(const char* name, const char* comments) { ControlSetups().Add(name)->SetComments(comments); }

  test::ControlFixture components;
  test::ScriptedHost host;
  test::ScopedHost scopedHost{host};
  std::unique_ptr<SetupsPage> page;
  QTemporaryDir folder;
};

TEST_F(SetupsPageTest, ShowsTheControlsSetupsWithTheMarkOnTheLastExchangedOne) {
  AddToControl("Rise", "fast edge");
  AddToControl("Noise", "");
  ControlSetups().SetLastInstrumentSetup("Noise");

  EXPECT_EQ(Column(0), QStringList({"Rise", "Noise"}));
  EXPECT_EQ(Column(1), QStringList({"fast edge", ""}));
  EXPECT_EQ(MarkedRows(), QStringList({"Noise"}));
  EXPECT_EQ(List()->headerItem()->text(0), "Name");
  EXPECT_EQ(List()->headerItem()->text(1), "Comments");
  EXPECT_EQ(List()->currentItem(), List()->topLevelItem(0));
}

TEST_F(SetupsPageTest, ButtonsFollowTheSelectedSetup) {
  AddToControl("Empty", "");
  AddToControl("Held", "");
  ControlSetups().item("Held")->GetFromInstrument();
  struct Case {
    int row;
    bool remove, get, send, save;
  };
  for (const Case& c : {Case{1, true, true, true, true}, Case{0, true, true, false, false}}) {
    SCOPED_TRACE(c.row);
    ClickRow(c.row);
    EXPECT_EQ(Page().Behaviour().SelectedRow(), c.row);
    EXPECT_EQ(Button("CommandRemove")->isEnabled(), c.remove);
    EXPECT_EQ(Button("CommandGetFromInstrument")->isEnabled(), c.get);
    EXPECT_EQ(Button("CommandSendToInstrument")->isEnabled(), c.send);
    EXPECT_EQ(Button("CommandSendToFile")->isEnabled(), c.save);
    EXPECT_TRUE(Button("CommandAdd")->isEnabled());
    EXPECT_TRUE(Button("CommandGetFromFile")->isEnabled());
  }
  // With no setup at all only Add and Open remain.
  host.msgBoxAnswers = {MsgBoxResult::OK, MsgBoxResult::OK};
  Click("CommandRemove");
  Click("CommandRemove");
  EXPECT_EQ(List()->topLevelItemCount(), 0);
  EXPECT_FALSE(Button("CommandRemove")->isEnabled());
  EXPECT_FALSE(Button("CommandGetFromInstrument")->isEnabled());
}

TEST_F(SetupsPageTest, AddFetchesFromTheInstrumentAndReachesTheControlOnlyOnApply) {
  AnswerSetupForm("Bench1", "probe check", true);
  Click("CommandAdd");

  EXPECT_EQ(Column(0), QStringList({"Bench1"}));
  EXPECT_TRUE(host.boxes.empty());
  EXPECT_EQ(MarkedRows(), QStringList({"Bench1"}));
  ASSERT_TRUE(Working("Bench1")->LearnString().has_value());
  EXPECT_FALSE(Working("Bench1")->LearnString()->empty());
  EXPECT_TRUE(Page().Changed());
  EXPECT_EQ(ControlSetups().Count(), 0);

  Page().ApplyChanges();
  ASSERT_EQ(ControlSetups().Count(), 1);
  EXPECT_EQ(ControlSetups().item("Bench1")->Comments(), "probe check");
  EXPECT_EQ(ControlSetups().item("Bench1")->LearnString(), Working("Bench1")->LearnString());
  EXPECT_FALSE(Page().Changed());
}

TEST_F(SetupsPageTest, DeleteKeyRemovesAfterAskingAndOnlyFromTheWorkingCopy) {
  AddToControl("A", "");
  AddToControl("B", "");
  ClickRow(0);
  QTest::keyClick(List(), Qt::Key_Delete);
  ASSERT_EQ(host.boxes.size(), 1u);
  EXPECT_EQ(host.boxes[0].title, "Remove Setup");
  EXPECT_EQ(Column(0), QStringList({"B"}));
  EXPECT_EQ(ControlSetups().Count(), 2) << "removal waits for Apply";
}

TEST_F(SetupsPageTest, GetAndSendMoveTheMark) {
  AddToControl("A", "");
  AddToControl("B", "");
  ClickRow(1);
  Click("CommandGetFromInstrument");
  EXPECT_TRUE(host.boxes.empty()) << "an empty setup is filled without asking";
  ASSERT_TRUE(Working("B")->LearnString().has_value());
  EXPECT_EQ(MarkedRows(), QStringList({"B"}));
  ClickRow(0);
  Click("CommandGetFromInstrument");
  EXPECT_EQ(MarkedRows(), QStringList({"A"}));

  ClickRow(1);
  Click("CommandSendToInstrument");
  ASSERT_EQ(host.boxes.size(), 1u) << "only the confirmation, no error";
  EXPECT_EQ(host.boxes[0].title, "Send Setup");
  EXPECT_EQ(MarkedRows(), QStringList({"B"}));
}

TEST_F(SetupsPageTest, SaveAsAndOpenGoThroughTheHostsFileDialogs) {
  AnswerSetupForm("Bench1", "probe check", true);
  Click("CommandAdd");
  const std::string path = QDir(folder.path()).filePath("Saved.scp").toStdString();
  host.saveFileAnswers = {FileDialogResult{path, 2}};
  ClickRow(0);
  Click("CommandSendToFile");
  ASSERT_EQ(host.saveFileRequests.size(), 1u);
  EXPECT_EQ(host.saveFileRequests[0].title, "Save Setup File");
  EXPECT_EQ(host.saveFileRequests[0].fileName, "Bench1");
  ASSERT_TRUE(QFile::exists(QString::fromStdString(path)));

  // Opened again: a new setup named after the file, with the same learn string.
  host.openFileAnswers = {FileDialogResult{path, 2}};
  Click("CommandGetFromFile");
  EXPECT_EQ(Column(0), QStringList({"Bench1", "Saved"}));
  EXPECT_EQ(Working("Saved")->LearnString(), Working("Bench1")->LearnString());
  EXPECT_EQ(host.openFileRequests.at(0).initialDirectory, folder.path().toStdString());

  // A cancelled file dialog changes nothing.
  host.ClearRecords();
  Click("CommandGetFromFile");
  EXPECT_EQ(Column(0), QStringList({"Bench1", "Saved"}));
  EXPECT_TRUE(host.boxes.empty());
}

TEST_F(SetupsPageTest, PopupMenuCopiesTheNameAndEditsTheSetup) {
  AddToControl("Rise", "fast edge");
  AnswerPopupMenu("Copy");
  ClickRow(0, Qt::RightButton);
  EXPECT_EQ(host.clipboard, "Rise");

  test::AnswerNextModal<FrmSetupDialog>([](FrmSetupDialog* dialog) {
    EXPECT_EQ(dialog->windowTitle(), "Edit Setup");
    EXPECT_FALSE(dialog->findChild<QCheckBox*>("GetSetupFromInstrument")->isVisible());
    EXPECT_EQ(dialog->findChild<QLineEdit*>("Comments")->text(), "fast edge");
    dialog->findChild<QLineEdit*>("Name")->setText("Rise2");
    QTest::mouseClick(dialog->findChild<QPushButton*>("OK"), Qt::LeftButton);
  });
  AnswerPopupMenu("Edit");
  ClickRow(0, Qt::RightButton);
  EXPECT_EQ(Column(0), QStringList({"Rise2"}));
  EXPECT_EQ(Working("Rise2")->Comments(), "fast edge");
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
  struct Case {
    std::int32_t country;
    QString page, add, saveAs, nameColumn, font;
  };
  for (const Case& c : {Case{82, "셋업", "추가", "다른 이름으로 저장", "이름", "Noto Sans CJK KR"},
                        Case{49, "Setups", "Hinzufügen", "Speichern unter", "Name", ""}}) {
    SCOPED_TRACE(c.country);
    Control().SetCountryCode(c.country);
    page.reset();
    EXPECT_EQ(Page().Caption(), c.page);
    EXPECT_EQ(Button("CommandAdd")->text(), c.add);
    EXPECT_EQ(Button("CommandSendToFile")->text(), c.saveAs);
    EXPECT_EQ(List()->headerItem()->text(0), c.nameColumn);
    if (!c.font.isEmpty()) {
      EXPECT_EQ(QFontInfo(Button("CommandAdd")->font()).family(), c.font);
    }
  }
}

}  // namespace
}  // namespace cvn73100::ui
