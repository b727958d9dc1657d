#include "ioconfig/ModIsHandshakeOK.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "connection/CQueryInstrument.h"
#include "dialogs/FrmMessageOption.h"
#include "dialogs/Messages.h"
#include "platform/Components.h"
#include "platform/ScopeError.h"
#include "tests/support/ScriptedHost.h"

namespace cvn73100 {
namespace {

const std::string kSupported = "Corvane Technologies," + CQueryInstrument::SupportedModels()[0] + ",QX1,A.02.10";
const std::string kUnsupported = "Corvane Technologies,73199B,QX1,A.02.10";

class IsHandshakeOKTest : public ::testing::Test {
 protected:
  void SetUp() override { Messages::SetLanguageBase(Messages::ENGLISH); }
  void TearDown() override { Messages::SetLanguageBase(Messages::ENGLISH); }

  bool Check(const std::string& address, const std::string& idn, WindowHandle parent = 7) {
    return IsHandshakeOK(address, idn, parent, dontShow, last, shown, false, true);
  }

  test::ScriptedHost host;
  test::ScopedHost scoped{host};
  test::SupportLog support;
  std::vector<std::string>& messages = support.blocks;
  bool dontShow = false;
  std::string last = "unsettled";
  bool shown = true;
};

TEST_F(IsHandshakeOKTest, SettlesWithoutAWarningWhenNoneIsNeeded) {
  const struct {
    const char* address;
    std::string idn;
    const char* before;
    const char* after;
  } cases[] = {
      {"gpib0::7", kSupported, "", "GPIB0::7::INSTR"},
      {"GPIB1::3::INSTR", "", "COM1", "GPIB1::3::INSTR"},
      {"COM1::Handshake=DTR_DSR", kSupported, "", "COM1::Handshake=DTR_DSR"},
      {"com2::baud=19200", kUnsupported, "", "COM2::Baud=19200"},
      {"COM1", "no comma here", "", "COM1"},
      // An empty reply clears the settled address.
      {"COM1", "", "COM1", ""},
      // Already settled for this very address.
      {"COM3", kSupported, "COM3", "COM3"},
  };
  for (const auto& c : cases) {
    last = c.before;
    shown = true;
    EXPECT_TRUE(Check(c.address, c.idn)) << c.address;
    EXPECT_FALSE(shown) << c.address;
    EXPECT_EQ(last, c.after) << c.address;
  }
  EXPECT_TRUE(host.optionDialogs.empty());
  EXPECT_TRUE(messages.empty());
}

TEST_F(IsHandshakeOKTest, WarnsOncePerAddress) {
  last = "";
  EXPECT_FALSE(Check("COM1", kSupported));
  EXPECT_TRUE(shown);
  EXPECT_EQ(last, "COM1");
  EXPECT_FALSE(dontShow);
  EXPECT_TRUE(Check("COM1", kSupported));
  EXPECT_FALSE(shown);
  // Another address is another question.
  EXPECT_FALSE(Check("COM1::Baud=19200", kSupported));
  EXPECT_EQ(host.optionDialogs.size(), 2u);
  EXPECT_EQ(last, "COM1::Baud=19200");
}

// A port whose settings are fixed at a serial device server is warned about even with DTR/DSR, in words of its own.
TEST_F(IsHandshakeOKTest, WarnsThatAFixedPortCannotBeSet) {
  struct FixedCom3 : IIOManager {
    std::vector<std::string> FindResources(const std::string&) override { return {}; }
    std::shared_ptr<IInstrumentIO> Open(const std::string&) override { return nullptr; }
    bool SerialSettingsFixed(const std::string& port) const override { return port == "COM3"; }
  };
  Components::SetIOManagerFactory([] { return std::make_shared<FixedCom3>(); });
  last = "";
  EXPECT_TRUE(Check("COM4::Handshake=DTR_DSR", kSupported));
  EXPECT_FALSE(Check("COM3::Handshake=DTR_DSR", kSupported));
  Components::SetIOManagerFactory(nullptr);
  ASSERT_EQ(host.optionDialogs.size(), 1u);
  EXPECT_EQ(host.optionDialogs[0].request.message, Messages::Load(724));
}

TEST_F(IsHandshakeOKTest, RemembersTheTickedOption) {
  last = "";
  host.optionAnswers.push_back(MessageOptionResult{MsgBoxResult::Cancel, true});
  MessageOptionResult result;
  EXPECT_TRUE(IsHandshakeOK("COM2", kSupported, 7, dontShow, last, shown, false, true, &result));
  EXPECT_TRUE(shown);
  EXPECT_TRUE(dontShow);
  EXPECT_EQ(result.button, MsgBoxResult::Cancel);
  // From now on nothing is asked and nothing is settled.
  EXPECT_TRUE(Check("COM4", kSupported));
  EXPECT_FALSE(shown);
  EXPECT_EQ(last, "COM2");
  EXPECT_EQ(host.optionDialogs.size(), 1u);
}

TEST_F(IsHandshakeOKTest, ShowsTheLongEnglishOrShortTranslatedWarningOnItsParentWithinTheScreen) {
  host.screenSize = {1280, 1024};
  host.boxRect = {0, 0, 400, 200};
  host.parentRect = {1000, 100, 400, 200};
  last = "";
  IsHandshakeOK("COM1", kSupported, 7, dontShow, last, shown, true, false);
  ASSERT_EQ(host.optionDialogs.size(), 1u);
  const MessageOptionRequest& r = host.optionDialogs[0].request;
  // English has the long form with the three steps; other languages the short one.
  EXPECT_NE(r.message.find("\r\n---- Verify that you have the correct RS-232 cable.\r\n"), std::string::npos);
  EXPECT_EQ(r.option, "Do not show this message again");
  EXPECT_EQ(r.title, "Instrument I/O Configuration");
  EXPECT_TRUE(r.optionChecked);
  EXPECT_FALSE(r.continueCancel);
  EXPECT_EQ(host.optionDialogs[0].placedAt, (Rect{600, 100, 400, 200}));

  Messages::SetLanguageBase(Messages::FRENCH);
  last = "";
  dontShow = false;  // the English dialog was closed with its option ticked
  Check("COM1", kSupported);
  ASSERT_EQ(host.optionDialogs.size(), 2u);
  const MessageOptionRequest& french = host.optionDialogs[1].request;
  EXPECT_EQ(french.message, Messages::Load(711) + "\r\n\r\n" + Messages::Load(712) + "\r\n\r\n" + Messages::Load(713));
  EXPECT_EQ(french.option, Messages::Load(714));
  EXPECT_EQ(french.title, Messages::Load(104));
}

TEST_F(IsHandshakeOKTest, ReportsAMissingParentAndRefusesABadAddress) {
  Check("GPIB0::7::INSTR", kSupported, 0);
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_NE(messages[0].find("Assertion: hwndParent <> 0\r\nAt: "), std::string::npos);
  EXPECT_NE(messages[0].find("File: IsHandshakeOK.bas\r\n"), std::string::npos);

  last = "kept";
  try {
    Check("COM5", kSupported);
    FAIL() << "COM5 accepted";
  } catch (const ScopeError& e) {
    EXPECT_EQ(e.Number(), ObjectError(ERR_INVALID_PROPERTY_VALUE));
  }
  EXPECT_EQ(last, "kept");
}

TEST(HandshakeOKWarningDialogTest, ReportsTheButtonAndTheOption) {
  MessageOptionRequest request;
  request.message = "m";
  request.option = "o";
  for (const bool continueCancel : {true, false}) {
    request.continueCancel = continueCancel;
    FrmMessageOption form(request);
    using B = FrmMessageOption::Button;
    // A hidden button does nothing.
    form.Click(continueCancel ? B::OK : B::Cancel);
    EXPECT_FALSE(form.Closed());
    form.SetOptionChecked(true);
    form.PressEscape();
    EXPECT_TRUE(form.Closed());
    EXPECT_EQ(form.Result().button, continueCancel ? MsgBoxResult::Cancel : MsgBoxResult::OK);
    EXPECT_TRUE(form.Result().optionChecked);
  }
}

TEST_F(IsHandshakeOKTest, DialogTakesANamedFontOnlyAndReportsAnEmptyOption) {
  FrmMessageOption form(MessageOptionRequest{});
  form.SetControlFont("", 12);
  EXPECT_EQ(form.FontName(), "");
  form.SetControlFont("Arial", 12);
  EXPECT_EQ(form.FontSize(), 12);
  form.Discover();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_NE(messages[0].find("Assertion: (Len(m_strOption) > 0)\r\n"), std::string::npos);
}

}  // namespace
}  // namespace cvn73100
