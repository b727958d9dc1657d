// The control widget and the property frame: pages offered in order and opened where the selector
// says, centring on the screen, Apply / OK / Cancel, the widget's deferred layout and its Qt properties.
#include "ui/PropertyFrame.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLabel>
#include <QMetaProperty>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTest>

#include "dialogs/AutoCenter.h"
#include "ioconfig/CIOconfiguration.h"
#include "tests/ui/FrameTestSupport.h"
#include "ui/Cvn73100ScopeWidget.h"
#include "ui/DialogPlacement.h"
#include "ui/QtHost.h"
#include "ui/SearchCriteriaPage.h"

namespace cvn73100::ui {
namespace {

// Stands in for the Setups page, which another part of the program registers.
class StubSetupsPage : public PropertyPage {
 public:
  using PropertyPage::PropertyPage;
  QString Caption() const override { return QStringLiteral("Setups"); }
  void SelectionChanged() override {}
  void ApplyChanges() override {}
  bool Changed() const override { return false; }
};

class PropertyFrameTest : public ::testing::Test {
 protected:
  void SetUp() override {
    host.Install();
    RegisterPropertyPage(Cvn73100Scope::PAGE_SETUPS, [](QWidget* parent) { return new StubSetupsPage(parent); });
    widget = std::make_unique<Cvn73100ScopeWidget>();
    widget->resize(300, 100);
    widget->show();
  }
  void TearDown() override {
    widget.reset();
    RegisterPropertyPage(Cvn73100Scope::PAGE_SETUPS, {});
  }

  // Opens the pages with `selector` and runs `look` on the frame before it is closed with `close`.
  void WithFrame(int selector, const std::function<void(PropertyFrame&)>& look) {
    bool shown = false;
    test::OnNextDialog(host, [&](QDialog* dialog) {
      auto* frame = qobject_cast<PropertyFrame*>(dialog);
      shown = frame != nullptr;
      if (frame) look(*frame);
      if (dialog->isVisible()) dialog->reject();
    });
    widget->ShowPropertyPages(selector);
    EXPECT_TRUE(shown);
  }

  Cvn73100Scope& Control() { return widget->Scope(); }

  test::ControlFixture components;  // registers the simulated I/O before the widget makes its control
  QtHost host;
  std::unique_ptr<Cvn73100ScopeWidget> widget;
};

TEST_F(PropertyFrameTest, SelectorsOfferThePagesInOrderAndOpenTheAskedOne) {
  struct Case {
    int selector;
    QStringList captions;
    int current;
  };
  // Which pages each selector offers is the control's rule; the frame shows what it is given.
  const Case cases[] = {{3, {"Search Criteria", "Set I/O"}, 1}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.selector);
    QStringList captions;
    int current = -1;
    WithFrame(c.selector, [&](PropertyFrame& frame) {
      for (int i = 0; i < frame.Tabs()->count(); ++i) captions << frame.Tabs()->tabText(i);
      current = frame.Tabs()->currentIndex();
      EXPECT_FALSE(frame.ApplyButton()->isEnabled());
    });
    EXPECT_EQ(captions, c.captions);
    EXPECT_EQ(current, c.current);
    // Offered while shown, the full list again afterwards.
    EXPECT_EQ(Control().PropertyPages().size(), 4u);
  }
}

TEST_F(PropertyFrameTest, FrameIsCentredOnTheScreenOnlyWhenTheControlSaysSo) {
  for (bool centre : {true, false}) {
    SCOPED_TRACE(centre);
    Control().SetCenterPropertyPages(centre);
    widget->move(5, 5);
    Rect placed;
    Rect expected;
    WithFrame(0, [&](PropertyFrame& frame) {
      placed = ToRect(frame.frameGeometry());
      const IPPCvn73100Scope& link = Control();
      expected =
          AutoCenter::CenterPropertyPage(placed, link.ScreenCenterWidthInPixels(), link.ScreenCenterHeightInPixels());
    });
    if (centre) {
      EXPECT_EQ(placed, expected);
    } else {
      EXPECT_NE(placed, expected);
    }
  }
}

TEST_F(PropertyFrameTest, ApplyAndOkHandTheCopyBackCancelDoesNot) {
  enum class Close { Apply, OK, Cancel };
  for (Close close : {Close::Apply, Close::OK, Close::Cancel}) {
    SCOPED_TRACE(static_cast<int>(close));
    Control().IOConfiguration()->SetRS232PortIncluded(2, true);
    const std::string addressBefore = Control().Address();
    bool applyEnabledAfterEdit = false;
    bool controlUntouchedWhileEditing = false;
    WithFrame(0, [&](PropertyFrame& frame) {
      auto* criteria = dynamic_cast<SearchCriteriaPage*>(frame.PageNamed(Cvn73100Scope::PAGE_SEARCH_CRITERIA));
      ASSERT_NE(criteria, nullptr);
      frame.Tabs()->setCurrentWidget(criteria);
      QTest::mouseClick(criteria->RS232Include(2), Qt::LeftButton);
      applyEnabledAfterEdit = frame.ApplyButton()->isEnabled();
      controlUntouchedWhileEditing = Control().IOConfiguration()->RS232PortIncluded(2);
      switch (close) {
        case Close::Apply:
          QTest::mouseClick(frame.ApplyButton(), Qt::LeftButton);
          EXPECT_FALSE(frame.ApplyButton()->isEnabled());
          break;
        case Close::OK:
          QTest::mouseClick(frame.OkButton(), Qt::LeftButton);
          EXPECT_FALSE(frame.isVisible());
          break;
        case Close::Cancel:
          QTest::mouseClick(frame.CancelButton(), Qt::LeftButton);
          break;
      }
    });
    EXPECT_TRUE(applyEnabledAfterEdit);
    EXPECT_TRUE(controlUntouchedWhileEditing);
    EXPECT_EQ(Control().IOConfiguration()->RS232PortIncluded(2), close == Close::Cancel);
    EXPECT_EQ(Control().Address(), addressBefore);
  }
}

TEST_F(PropertyFrameTest, WidgetShowsTheControlAndLaysOutOnceAfterResizing) {
  auto* address = widget->findChild<QLabel*>("LabelAddress");
  ASSERT_NE(address, nullptr);
  QSignalSpy notified(widget.get(), &Cvn73100ScopeWidget::addressChanged);
  Control().SetAddress("gpib1::12::instr");  // behind the widget's back: its next refresh notices
  widget->Refresh();
  widget->Refresh();
  EXPECT_EQ(address->toolTip(), "GPIB1::12::INSTR");
  ASSERT_EQ(notified.count(), 1);
  EXPECT_EQ(notified.at(0).at(0).toString(), "GPIB1::12::INSTR");

  QTest::qWait(Cvn73100ScopeWidget::RESIZE_DELAY_MS * 2);
  const int before = widget->LayoutCount();
  for (int width = 310; width < 360; width += 10) widget->resize(width, 100);
  EXPECT_TRUE(widget->ResizeTimer().isActive());
  EXPECT_EQ(widget->LayoutCount(), before);
  for (int waited = 0; waited < 2000 && widget->ResizeTimer().isActive(); waited += 10) QTest::qWait(10);
  EXPECT_FALSE(widget->ResizeTimer().isActive());
  EXPECT_EQ(widget->LayoutCount(), before + 1);
  EXPECT_EQ(address->text(), "GPIB1::12::INSTR");
}

TEST_F(PropertyFrameTest, DesignablePropertiesReachTheControlAndRefusedValuesChangeNothing) {
  struct Case {
    const char* name;
    QVariant value;
    QVariant expected;  // invalid: the control refuses the value and keeps what it had
    std::function<QVariant()> control;
  };
  auto& c = Control();
  const Case cases[] = {
      {"address", "gpib1::12::instr", "GPIB1::12::INSTR", [&] { return QString::fromStdString(c.Address()); }},
      {"countryCode", 49, 49, [&] { return int(c.CountryCode()); }},
      {"fontName", "DejaVu Sans", "DejaVu Sans", [&] { return QString::fromStdString(c.FontName()); }},
      {"fontSize", 12, 12, [&] { return int(c.FontSize()); }},
      {"fontSize", 40000, {}, [&] { return int(c.FontSize()); }},
      {"txDelay", 25, 25, [&] { return c.TXDelay(); }},
      {"supportMessageMode", 0, 0, [&] { return c.SupportMessageMode(); }},
      {"resetOnInitialize", !c.ResetOnInitialize(), !c.ResetOnInitialize(), [&] { return c.ResetOnInitialize(); }},
      {"checkIdOnInitialize", !c.CheckIDOnInitialize(), !c.CheckIDOnInitialize(),
       [&] { return c.CheckIDOnInitialize(); }},
      {"debugEnabled", true, true, [&] { return c.DebugEnabled(); }},
  };
  for (const Case& t : cases) {
    SCOPED_TRACE(t.name);
    const QMetaObject* meta = widget->metaObject();
    const QMetaProperty property = meta->property(meta->indexOfProperty(t.name));
    ASSERT_TRUE(property.isValid());
    EXPECT_TRUE(property.isDesignable() && property.isStored() && property.isWritable());
    const QVariant before = t.control();
    widget->setProperty(t.name, t.value);
    const QVariant after = t.control();
    EXPECT_EQ(after.toString(), (t.expected.isValid() ? t.expected : before).toString());
    const QVariant read = widget->property(t.name);
    EXPECT_EQ((property.isEnumType() ? QVariant(read.toInt()) : read).toString(), after.toString());
  }
}

}  // namespace
}  // namespace cvn73100::ui
