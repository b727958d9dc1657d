// cvnscope-gui's window on the simulated bus: the control's properties come from the form file and go
// back to it on closing; Initialize, a waveform capture and the screen image reach the screen.
#include "ui/ScopeMainWindow.h"

#include <gtest/gtest.h>

#include <QChart>
#include <QChartView>
#include <QLabel>
#include <QLineSeries>
#include <QTemporaryDir>

#include "control/Cvn73100Scope.h"
#include "form/FormFile.h"
#include "setups/SetupsCvn73100Scope.h"
#include "tests/support/ScriptedHost.h"
#include "tests/ui/FrameTestSupport.h"

namespace cvn73100::ui {
namespace {

class ScopeMainWindowTest : public ::testing::Test {
 protected:
  QString FormPath() const { return QDir(folder.path()).filePath("form.json"); }

  test::ControlFixture components;  // the simulated bus behind every control made here
  test::ScriptedHost host;
  test::ScopedHost scopedHost{host};
  QTemporaryDir folder;
};

TEST_F(ScopeMainWindowTest, ReadsTheFormAtStartAndWritesItBackOnClosing) {
  MemoryPropertyBag saved;
  saved.Set("Address", Variant(std::string("GPIB0::12::INSTR")));
  saved.Set("SetupCount", Variant(std::int16_t{1}));
  saved.Set("SetupName1", Variant(std::string("FromCli")));
  FormFile(FormPath().toStdString()).Save(saved);

  {
    ScopeMainWindow window(FormPath());
    EXPECT_EQ(window.Scope().Address(), "GPIB0::12::INSTR");
    ASSERT_EQ(window.Scope().Setups()->Count(), 1);
    EXPECT_EQ(window.Scope().Setups()->item(1)->Name(), "FromCli");
    window.Scope().SetAddress("GPIB0::3::INSTR");
    window.show();
    window.close();
  }
  MemoryPropertyBag reread;
  FormFile(FormPath().toStdString()).Load(reread);
  EXPECT_EQ(reread.ReadString("Address", ""), "GPIB0::3::INSTR");
  EXPECT_EQ(reread.ReadString("SetupName1", ""), "FromCli");
  EXPECT_TRUE(host.boxes.empty());
}

TEST_F(ScopeMainWindowTest, ANewFormLeavesNothingBehindWhenNotSaving) {
  {
    ScopeMainWindow window(FormPath());
    window.SetSaveOnClose(false);
    window.show();
    window.close();
  }
  EXPECT_FALSE(QFile::exists(FormPath()));
}

TEST_F(ScopeMainWindowTest, CapturesAWaveformAndTheScreenImageFromTheInstrument) {
  ScopeMainWindow window{QString()};
  window.show();
  window.InitializeInstrument();
  EXPECT_TRUE(window.Scope().InstrumentConnected());
  window.CaptureWaveform();
  window.FetchScreenImage();
  for (const auto& box : host.boxes) ADD_FAILURE() << box.title << ": " << box.prompt;

  const auto* chart = window.findChild<QChartView*>("ChartWaveform");
  ASSERT_EQ(chart->chart()->series().size(), 1);
  const auto* series = qobject_cast<QLineSeries*>(chart->chart()->series().front());
  ASSERT_NE(series, nullptr);
  EXPECT_EQ(series->count(), 1000);
  const auto* screen = window.findChild<QLabel*>("PictureScreen");
  EXPECT_FALSE(screen->pixmap().isNull());
}

TEST_F(ScopeMainWindowTest, ErrorsAreShownNotRaised) {
  ScopeMainWindow window{QString()};
  window.Scope().SetAddress("GPIB0::20::INSTR");  // nobody listens there
  window.InitializeInstrument();
  EXPECT_FALSE(window.Scope().InstrumentConnected());
  EXPECT_EQ(host.boxes.size(), 1u);
}

}  // namespace
}  // namespace cvn73100::ui
