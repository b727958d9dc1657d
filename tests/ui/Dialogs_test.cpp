// The dialogs drawn from their models: the search results'
// check boxes, the About box, their texts in another language, and the Designer plugin loading.
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QPluginLoader>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

#include "dialogs/FrmAbout.h"
#include "dialogs/LanguageSelection.h"
#include "dialogs/Messages.h"
#include "discovery/FrmSearchResults.h"
#include "tests/support/ScriptedHost.h"
#include "tests/ui/FrameTestSupport.h"
#include "ui/FrmAboutDialog.h"
#include "ui/FrmSearchResultsDialog.h"

namespace cvn73100::ui {
namespace {

class DialogsTest : public ::testing::Test {
 protected:
  void TearDown() override { Messages::SetLanguageBase(Messages::ENGLISH); }
  test::ScriptedHost host;
  test::ScopedHost scopedHost{host};
};

TEST_F(DialogsTest, SearchResultsCheckBoxesFollowTheModelAndHandTheTicksBackOnContinue) {
  // COM1 answered; COM3 was excluded before; the user excludes COM2 and includes COM3 again.
  for (const bool pressContinue : {false, true}) {
    SCOPED_TRACE(pressContinue ? "Continue" : "closed");
    FrmSearchResults model;
    for (std::int32_t i = 0; i < FrmSearchResults::COM_PORT_COUNT; ++i) {
      model.SetInstrumentFoundOnCOMPort(i, i == 0);
      model.SetIncludedCOMPort(i, i != 2);
    }
    model.Update();
    test::AnswerNextModal<FrmSearchResultsDialog>([pressContinue](FrmSearchResultsDialog* dialog) {
      const bool enabled[] = {false, true, true, true};
      const bool checked[] = {false, false, true, false};
      for (int i = 0; i < 4; ++i) {
        auto* check = dialog->findChild<QCheckBox*>(QString("CheckCOM%1").arg(i + 1));
        EXPECT_EQ(check->isEnabled(), enabled[i]) << i;
        EXPECT_EQ(check->isChecked(), checked[i]) << i;
      }
      QTest::mouseClick(dialog->findChild<QCheckBox*>("CheckCOM2"), Qt::LeftButton);
      QTest::mouseClick(dialog->findChild<QCheckBox*>("CheckCOM3"), Qt::LeftButton);
      if (pressContinue) {
        QTest::mouseClick(dialog->findChild<QPushButton*>("Continue"), Qt::LeftButton);
      } else {
        dialog->close();
      }
    });
    FrmSearchResultsDialog::ShowModal(model, nullptr);
    EXPECT_EQ(model.IncludedCOMPort(1), !pressContinue);
    EXPECT_EQ(model.IncludedCOMPort(2), pressContinue);
  }
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
