// The Search Instruments, Search Criteria and Set I/O pages against the simulated bus: each filled
// from its behaviour or its copy of the I/O configuration, clicks driving it, Apply handing back, the
// support-message chords, and the texts and fonts of the language.
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFontInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTest>
#include <QTreeWidget>

#include "diagnostics/CDebug.h"
#include "discovery/Cvn73100PPSrchIO.h"
#include "ioconfig/CIOconfiguration.h"
#include "tests/support/ScriptedHost.h"
#include "tests/ui/FrameTestSupport.h"
#include "ui/PropertyFrame.h"
#include "ui/SearchCriteriaPage.h"
#include "ui/SearchInstrumentsPage.h"
#include "ui/SetIOPage.h"

namespace cvn73100::ui {
namespace {

class PagesTest : public ::testing::Test {
 protected:
  void SetUp() override { Control().SetAddress("GPIB0::7::INSTR"); }
  void TearDown() override { frame.reset(); }

  Cvn73100Scope& Control() { return *components.control; }
  void Open(int initialPage = 0) {
    frame = std::make_unique<PropertyFrame>(
        Control(),
        std::vector<std::string>{Cvn73100Scope::PAGE_SEARCH_IO, Cvn73100Scope::PAGE_SEARCH_CRITERIA,
                                 Cvn73100Scope::PAGE_SET_IO},
        initialPage);
    frame->show();
  }
  template <class Page>
  Page* PageOf(const char* name) {
    auto* page = dynamic_cast<Page*>(frame->PageNamed(name));
    if (page) frame->Tabs()->setCurrentWidget(page);
    return page;
  }
  static void Choose(QComboBox* combo, const QString& text) { combo->setCurrentIndex(combo->findText(text)); }

  test::ControlFixture components;
  test::ScriptedHost host;
  test::ScopedHost scopedHost{host};
  std::unique_ptr<PropertyFrame> frame;
};

TEST_F(PagesTest, SearchListsTheSimulatedInstrumentsAndApplyMakesTheChosenOneTheAddress) {
  CIOconfiguration& config = *Control().IOConfiguration();
  for (int port = 1; port <= 4; ++port) config.SetRS232PortIncluded(port, true);
  for (int a = 0; a <= 30; ++a) config.SetGPIBPortIncludes(0, a, a == 3 || a == 7 || a == 12 || a == 20);
  Open();
  auto* page = PageOf<SearchInstrumentsPage>(Cvn73100Scope::PAGE_SEARCH_IO);
  ASSERT_NE(page, nullptr);

  EXPECT_FALSE(page->TestButton()->isEnabled());

  // COM1 answered and COM2..COM4 have no device: the results dialog has no port to name and does not appear.
  bool resultsShown = false;
  const QPointer<QTimer> resultsAnswer = test::AnswerNextModal<QDialog>([&](QDialog* dialog) {
    resultsShown = true;
    QTest::mouseClick(dialog->findChild<QPushButton*>("Continue"), Qt::LeftButton);
  });
  QTest::mouseClick(page->SearchButton(), Qt::LeftButton);
  EXPECT_FALSE(resultsShown);
  delete resultsAnswer;
  EXPECT_EQ(page->SearchButton()->text(), "Search");
  // The rows are the behaviour's, drawn as they are.
  EXPECT_EQ(test::Column(page->List(), 2), (QStringList{"COM1", "GPIB0::3", "GPIB0::7", "GPIB0::12", "GPIB0::20"}));
  EXPECT_EQ(test::Column(page->List(), 1), (QStringList{"X", "", "X", "", ""}));
  EXPECT_EQ(page->MessageLabel()->text(), "Search Complete.");
  EXPECT_TRUE(page->TestButton()->isEnabled());
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
  // The row of the control's address carries the icon and is selected.
  const QImage connected = SearchInstrumentsPage::ConnectedInstrumentIcon().pixmap(16).toImage();
  for (int i = 0; i < page->List()->topLevelItemCount(); ++i) {
    const QTreeWidgetItem* item = page->List()->topLevelItem(i);
    EXPECT_EQ(item->icon(0).pixmap(16).toImage() == connected, item->text(2) == "GPIB0::7") << i;
  }
  EXPECT_EQ(page->List()->currentItem()->text(2), "GPIB0::7");

  QTreeWidgetItem* other = page->List()->topLevelItem(1);
  QTest::mouseClick(page->List()->viewport(), Qt::LeftButton, {}, page->List()->visualItemRect(other).center());
  QTest::mouseClick(frame->ApplyButton(), Qt::LeftButton);
  EXPECT_EQ(Control().Address(), "GPIB0::3::INSTR");
}

TEST_F(PagesTest, SearchCriteriaShowsTheCopyAndHandsItsTablesBack) {
  CIOconfiguration& config = *Control().IOConfiguration();
  config.SetBaudRate(2, 19200);
  config.SetHandshake(3, RS232_HandShake_DTR_DSR);
  config.SetGPIBPortIncluded(1, false);
  config.SetRS232PortIncluded(4, false);
  for (int a = 0; a <= 30; ++a) config.SetGPIBPortIncludes(0, a, a == 7);
  Open(1);
  auto* page = PageOf<SearchCriteriaPage>(Cvn73100Scope::PAGE_SEARCH_CRITERIA);
  ASSERT_NE(page, nullptr);

  EXPECT_EQ(page->BaudRate(2)->currentText(), "19200");
  EXPECT_EQ(page->Handshake(3)->currentText(), "DTR/DSR");
  EXPECT_FALSE(page->GPIBInclude(1)->isChecked());
  EXPECT_FALSE(page->RS232Include(4)->isChecked());
  EXPECT_FALSE(page->MaskAddress(8)->isChecked());

  QTest::mouseClick(page->FindPorts(), Qt::LeftButton);
  EXPECT_EQ(page->GPIBInstalled(1)->text(), "Not installed");
  EXPECT_EQ(page->RS232Installed(1)->text(), "Installed");
  EXPECT_TRUE(page->MaskAddress(7)->font().bold()) << "a listener was found there";

  QTest::mouseClick(page->IncludeAll(), Qt::LeftButton);
  for (int a = 0; a <= 30; ++a) EXPECT_TRUE(page->MaskAddress(a)->isChecked()) << a;
  Choose(page->MaskPort(), "GPIB2");
  QTest::mouseClick(page->ExcludeAll(), Qt::LeftButton);
  for (int a = 0; a <= 30; ++a) EXPECT_FALSE(page->MaskAddress(a)->isChecked()) << a;
  QTest::mouseClick(page->DTROnly(), Qt::LeftButton);
  for (int port = 1; port <= 4; ++port) {
    EXPECT_EQ(page->Handshake(port)->currentText(), "DTR/DSR") << port;
    EXPECT_FALSE(page->Handshake(port)->isEnabled()) << port;
  }
  EXPECT_FALSE(config.GPIBPortIncludes(0, 8)) << "the control keeps its own until Apply";

  // Meanwhile another page gave the control a new address: Apply keeps it.
  Control().SetAddress("GPIB0::12::INSTR");
  QTest::mouseClick(frame->ApplyButton(), Qt::LeftButton);
  EXPECT_TRUE(config.GPIBPortIncludes(0, 8));
  EXPECT_FALSE(config.GPIBPortIncludes(2, 8));
  EXPECT_TRUE(config.DTROnly());
  EXPECT_TRUE(config.GPIBPortInstalled(0));
  EXPECT_EQ(Control().Address(), "GPIB0::12::INSTR");
  EXPECT_GE(host.Changes("SearchCriteria"), 1);
}

TEST_F(PagesTest, SetIOBuildsTheAddressAndAppliesIt) {
  Open(2);
  auto* page = PageOf<SetIOPage>(Cvn73100Scope::PAGE_SET_IO);
  ASSERT_NE(page, nullptr);
  EXPECT_EQ(page->GPIBAddress()->value(), 7);
  EXPECT_FALSE(page->BaudRate()->isVisible());

  Choose(page->Port(), "COM2");
  Choose(page->BaudRate(), "19200");
  EXPECT_TRUE(page->BaudRate()->isVisible());
  EXPECT_FALSE(page->GPIBAddress()->isVisible());
  const QString built = page->AddressBox()->text();
  EXPECT_TRUE(built.startsWith("COM2") && built.contains("Baud=19200")) << built.toStdString();
  EXPECT_EQ(Control().Address(), "GPIB0::7::INSTR");

  // A typed address takes over the fields; an invalid one is refused and shown.
  page->AddressBox()->setFocus();
  page->AddressBox()->selectAll();
  QTest::keyClicks(page->AddressBox(), "gpib1::5::instr");
  QTest::keyClick(page->AddressBox(), Qt::Key_Return);
  EXPECT_EQ(page->GPIBAddress()->value(), 5);
  EXPECT_EQ(page->AddressBox()->text(), "GPIB1::5::INSTR");
  page->AddressBox()->selectAll();
  QTest::keyClicks(page->AddressBox(), "GPIB9::99");
  QTest::keyClick(page->AddressBox(), Qt::Key_Return);
  ASSERT_FALSE(host.boxes.empty());
  EXPECT_EQ(host.boxes.back().prompt, "Invalid property value.");
  EXPECT_EQ(page->AddressBox()->text(), "GPIB1::5::INSTR");

  QTest::mouseClick(frame->OkButton(), Qt::LeftButton);
  EXPECT_EQ(Control().Address(), "GPIB1::5::INSTR");
}

TEST_F(PagesTest, SetIOApplyAsksAboutTheHandshakeFirst) {
  Open(2);
  auto* page = PageOf<SetIOPage>(Cvn73100Scope::PAGE_SET_IO);
  ASSERT_NE(page, nullptr);
  Choose(page->Port(), "COM1");
  Choose(page->Handshake(), "XON/XOFF");
  QTest::mouseClick(page->TestButton(), Qt::LeftButton);  // the simulated COM1 answers as a supported model
  ASSERT_FALSE(host.boxes.empty());

  host.optionAnswers.push_back(MessageOptionResult{MsgBoxResult::Cancel, false});
  QTest::mouseClick(frame->ApplyButton(), Qt::LeftButton);
  ASSERT_EQ(host.optionDialogs.size(), 1u);
  EXPECT_TRUE(host.optionDialogs[0].request.continueCancel);
  EXPECT_EQ(Control().Address(), "GPIB0::7::INSTR") << "Cancel keeps the page's settings unapplied";
  EXPECT_TRUE(frame->ApplyButton()->isEnabled());

  // The question is settled for this address: the next Apply goes through without it.
  QTest::mouseClick(frame->ApplyButton(), Qt::LeftButton);
  EXPECT_EQ(host.optionDialogs.size(), 1u);
  EXPECT_EQ(Control().Address().rfind("COM1", 0), 0u) << Control().Address();
}

TEST_F(PagesTest, AddressBoxChordsAddTheirBitToTheSupportMessageMode) {
  struct Case {
    std::int32_t before;
    Qt::Key key;
    std::int32_t after;
    const char* confirmation;
  };
  const Case cases[] = {
      {0, Qt::Key_B, 1, "Support Message message boxes have been enabled."},
      {2, Qt::Key_L, 4, "Support Message log file has been enabled."},  // added twice: carries into events
      {1, Qt::Key_E, 5, "Support Message events have been enabled."},
      {8, Qt::Key_A, 0, "Support Message debug mode assert has been enabled."},  // 16 holds none of the bits
      {7, Qt::Key_ParenRight, 0, "All Support Message functionality has been disabled."},
  };
  Open(2);
  auto* page = PageOf<SetIOPage>(Cvn73100Scope::PAGE_SET_IO);
  ASSERT_NE(page, nullptr);
  page->AddressBox()->setFocus();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.confirmation);
    Control().SetSupportMessageMode(c.before);
    host.ClearRecords();
    const QString text = page->AddressBox()->text();
    QTest::keyClick(page->AddressBox(), c.key, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(Control().SupportMessageMode(), c.after);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].prompt, c.confirmation);
    EXPECT_TRUE(host.boxes[0].placedAt.has_value()) << "centred over the page";
    EXPECT_EQ(page->AddressBox()->text(), text) << "a chord types nothing";
  }
  host.ClearRecords();
  QTest::keyClick(page->AddressBox(), Qt::Key_L, Qt::ControlModifier);
  EXPECT_TRUE(host.boxes.empty()) << "Ctrl alone is no chord";
  Control().SetSupportMessageMode(0);
}

TEST_F(PagesTest, LanguageGivesThePagesTheirTextsAndFont) {
  const auto text = [](int number) { return QString::fromStdString(Messages::Load(number)); };
  for (const std::int32_t countryCode : {886, 1}) {
    SCOPED_TRACE(countryCode);
    Control().SetCountryCode(countryCode);
    Open();
    QStringList captions;
    for (int i = 0; i < frame->Tabs()->count(); ++i) captions << frame->Tabs()->tabText(i);
    EXPECT_EQ(captions, (QStringList{text(200), text(300), text(301)}));
    auto* search = PageOf<SearchInstrumentsPage>(Cvn73100Scope::PAGE_SEARCH_IO);
    EXPECT_EQ(search->SearchButton()->text(), text(207));
    // The application's own family stands in for a font the computer lacks.
    EXPECT_EQ(QFontInfo(search->SearchButton()->font()).family(),
              countryCode == 886 ? "Noto Sans CJK TC" : QFontInfo(QApplication::font()).family());
    EXPECT_EQ(search->SearchButton()->font().pointSize(), Control().FontSize());
  }
}

}  // namespace
}  // namespace cvn73100::ui
