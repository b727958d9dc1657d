// The dialogs drawn from their models: the Add / Edit setup dialog's validation, the search results'
// check boxes, the About box, their texts in another language, and the Designer plugin loading.
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPluginLoader>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

#include "dialogs/FrmAbout.h"
#include "dialogs/LanguageSelection.h"
#include "dialogs/Messages.h"
#include "discovery/FrmSearchResults.h"
#include "setups/FrmSetup.h"
#include "tests/support/ScriptedHost.h"
#include "tests/ui/FrameTestSupport.h"
#include "ui/FrmAboutDialog.h"
#include "ui/FrmSearchResultsDialog.h"
#include "ui/FrmSetupDialog.h"

namespace cvn73100::ui {
namespace {

class DialogsTest : public ::testing::Test {
 protected:
  void TearDown() override { Messages::SetLanguageBase(Messages::ENGLISH); }
  test::ScriptedHost host;
  test::ScopedHost scopedHost{host};
};

TEST_F(DialogsTest, SetupFormStaysOpenUntilTheTextsAreAcceptable) {
  struct Case {
    QString name, comments;
    std::string refusal;  // the box shown, "" when OK closes the dialog
  };
  for (const Case& c : {Case{"Bench1", "any comment", ""},
                        Case{"two words", "", "Names may not contain spaces or the \"|\" character."}}) {
    SCOPED_TRACE(c.name.toStdString() + " / " + c.comments.toStdString());
    host.ClearRecords();
    FrmSetup form;
    form.Update(FrmSetup::Purpose::Add, "", "", true);
    bool openAfterOK = false;
    test::AnswerNextModal<FrmSetupDialog>([&](FrmSetupDialog* dialog) {
      dialog->findChild<QLineEdit*>("Name")->setText(c.name);
      dialog->findChild<QLineEdit*>("Comments")->setText(c.comments);
      QTest::mouseClick(dialog->findChild<QPushButton*>("OK"), Qt::LeftButton);
      openAfterOK = dialog->isVisible();
      if (openAfterOK) QTest::mouseClick(dialog->findChild<QPushButton*>("Cancel"), Qt::LeftButton);
    });
    FrmSetupDialog::ShowModal(form, QApplication::font(), nullptr);

    EXPECT_EQ(openAfterOK, !c.refusal.empty());
    if (c.refusal.empty()) {
      EXPECT_EQ(form.GetResult(), FrmSetup::Result::OK);
      EXPECT_EQ(form.Name(), c.name.toStdString());
      EXPECT_EQ(form.Comments(), c.comments.toStdString());
      EXPECT_TRUE(host.boxes.empty());
    } else {
      EXPECT_EQ(form.GetResult(), FrmSetup::Result::Cancel);
      ASSERT_EQ(host.boxes.size(), 1u);
      EXPECT_EQ(host.boxes[0].prompt, c.refusal);
    }
  }
}

TEST_F(DialogsTest, SearchResultsCheckBoxesFollowTheModelAndHandTheTicksBack) {
  // COM1 answered; COM3 was excluded before; the user excludes COM2 and includes COM3 again.
  FrmSearchResults model;
  for (std::int32_t i = 0; i < FrmSearchResults::COM_PORT_COUNT; ++i) {
    model.SetInstrumentFoundOnCOMPort(i, i == 0);
    model.SetIncludedCOMPort(i, i != 2);
  }
  model.Update();
  model.Show();
  test::AnswerNextModal<FrmSearchResultsDialog>([](FrmSearchResultsDialog* dialog) {
    EXPECT_EQ(dialog->windowTitle(), "Search Instruments Results");
    EXPECT_EQ(dialog->findChild<QGroupBox*>("FrameExclude")->title(), "Exclude from Future Searches");
    const QString explanation = dialog->findChild<QLabel*>("Explanation")->text();
    EXPECT_FALSE(explanation.contains("COM1"));
    EXPECT_TRUE(explanation.contains("\n    COM2\n    COM3\n    COM4"));
    const bool enabled[] = {false, true, true, true};
    const bool checked[] = {false, false, true, false};
    for (int i = 0; i < 4; ++i) {
      auto* check = dialog->findChild<QCheckBox*>(QString("CheckCOM%1").arg(i + 1));
      EXPECT_EQ(check->text(), QString("COM%1").arg(i + 1));
      EXPECT_EQ(check->isEnabled(), enabled[i]) << i;
      EXPECT_EQ(check->isChecked(), checked[i]) << i;
    }
    QTest::mouseClick(dialog->findChild<QCheckBox*>("CheckCOM2"), Qt::LeftButton);
    QTest::mouseClick(dialog->findChild<QCheckBox*>("CheckCOM3"), Qt::LeftButton);
    QTest::mouseClick(dialog->findChild<QPushButton*>("Continue"), Qt::LeftButton);
  });
  FrmSearchResultsDialog::ShowModal(model, nullptr);
  EXPECT_FALSE(model.Visible());
  EXPECT_TRUE(model.IncludedCOMPort(0));
  EXPECT_FALSE(model.IncludedCOMPort(1));
  EXPECT_TRUE(model.IncludedCOMPort(2));
  EXPECT_TRUE(model.IncludedCOMPort(3));
}

TEST_F(DialogsTest, SearchResultsClosedWithoutContinueChangeNothing) {
  FrmSearchResults model;
  for (std::int32_t i = 0; i < FrmSearchResults::COM_PORT_COUNT; ++i) model.SetIncludedCOMPort(i, true);
  model.Update();
  test::AnswerNextModal<FrmSearchResultsDialog>([](FrmSearchResultsDialog* dialog) {
    QTest::mouseClick(dialog->findChild<QCheckBox*>("CheckCOM4"), Qt::LeftButton);
    dialog->close();
  });
  FrmSearchResultsDialog::ShowModal(model, nullptr);
  EXPECT_TRUE(model.IncludedCOMPort(3));
}

TEST_F(DialogsTest, AboutBoxInTheCurrentLanguage) {
  Messages::SetLanguageBase(Messages::KOREAN);
  FrmAbout about("2.5.1");
  FrmAboutDialog dialog(about);
  EXPECT_EQ(dialog.windowTitle(), "QD 73100 오실로스코프 컨트롤 정보");
  EXPECT_EQ(dialog.findChild<QLabel*>("Line2")->text(), "버전: 2.5.1");
  EXPECT_EQ(dialog.font().family(), QString::fromStdString(Messages::Load(102)));
  dialog.show();
  QTest::mouseClick(dialog.findChild<QPushButton*>("OK"), Qt::LeftButton);
  EXPECT_TRUE(about.Closed());
  EXPECT_FALSE(dialog.isVisible());
}

#ifdef CVN_DESIGNER_PLUGIN
TEST(DesignerPlugin, LoadsAndMakesTheControlWidget) {
  // The plugin's control keeps its log in the temporary folder.
  QTemporaryDir temp;
  qputenv("TMPDIR", temp.path().toLocal8Bit());
  QPluginLoader loader(CVN_DESIGNER_PLUGIN);
  ASSERT_TRUE(loader.load()) << loader.errorString().toStdString();
  auto* plugin = qobject_cast<QDesignerCustomWidgetInterface*>(loader.instance());
  ASSERT_NE(plugin, nullptr);
  EXPECT_EQ(plugin->name(), "cvn73100::ui::Cvn73100ScopeWidget");
  EXPECT_TRUE(plugin->domXml().contains("class=\"cvn73100::ui::Cvn73100ScopeWidget\""));
  std::unique_ptr<QWidget> widget(plugin->createWidget(nullptr));
  ASSERT_NE(widget, nullptr);
  EXPECT_EQ(widget->metaObject()->className(), plugin->name());
  auto* name = widget->findChild<QLabel*>("LabelName");
  ASSERT_NE(name, nullptr);
  EXPECT_EQ(name->text(), "QD 73100 Scope Control");
}
#endif

}  // namespace
}  // namespace cvn73100::ui
