#include "control/Cvn73100Scope.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "connection/CCvn73100EZ.h"
#include "diagnostics/CDebug.h"
#include "dialogs/Messages.h"
#include "ioconfig/CIOconfiguration.h"
#include "platform/Components.h"
#include "platform/Os.h"
#include "server/Cvn73100Server.h"
#include "setups/SetupsCvn73100Scope.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/SimulatedScope.h"
#include "tests/support/TempDir.h"

namespace cvn73100 {
namespace {

constexpr std::int32_t kInvalidPropertyValue = -2147221124;

// The bag's keys in order, separated by spaces.
std::string Keys(const MemoryPropertyBag& bag) {
  std::string keys;
  for (const auto& entry : bag.Entries()) keys += (keys.empty() ? "" : " ") + entry.first;
  return keys;
}

class Cvn73100ScopeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    os.SetTempPath(dir.string() + "/");
    os.SetProgramFolder(dir.string() + "/");
    os.SetDoubleByte(950, true);
    Os::SetCurrent(&os);
    Messages::SetLanguageBase(Messages::ENGLISH);
    server::RegisterAutomationServer();
    Components::SetIOManagerFactory([this] { return sim.manager; });
    scope = std::make_unique<Cvn73100Scope>();
    scope->SupportMessage.Connect([this](const std::string& m) { supportMessages.push_back(m); });
  }
  void TearDown() override {
    scope.reset();
    CDebug::SetInstance(nullptr);
    Messages::SetLanguageBase(Messages::ENGLISH);
    Os::SetCurrent(nullptr);
  }

  std::int32_t ErrorOf(const std::function<void()>& action) {
    error = test::ErrorOf(action);
    return error->Number();
  }

  test::TempDir temp{"cvnscope"};
  const std::filesystem::path& dir = temp.path();
  FakeOs os;
  test::ScriptedHost host;
  test::ScopedHost scoped{host};
  test::SimulatedScope sim;
  std::unique_ptr<Cvn73100Scope> scope;
  std::vector<std::string> supportMessages;
  std::optional<ScopeError> error;
};

TEST_F(Cvn73100ScopeTest, StartsWithAFreshLogAndWritesOnlyNonDefaults) {
  const std::string text = test::ReadAll(dir / "CvnScope.DBG");
  EXPECT_EQ(text.rfind("Trace: UserControl_Initialize -- At: File: Cvn73100Scope; \r\n", 0), 0u) << text;
  EXPECT_EQ(scope->SupportMessageMode(), CDebug::MODE_LOG);
  EXPECT_EQ(scope->Connection()->AutomationServerAddress(), "GPIB0::7::INSTR");
  EXPECT_EQ(scope->Setups()->CCvn73100EZPtr(), scope->Connection());
  EXPECT_TRUE(host.propertyChanges.empty());
  // The control is the I/O manager's source for port detection.
  CIOconfiguration found;
  found.FindAll(*scope);
  EXPECT_TRUE(found.GPIBPortInstalled(0));
  EXPECT_TRUE(found.GPIBInstrumentFound(0, 7));

  MemoryPropertyBag bag;
  scope->WriteProperties(bag);
  // The image has no default; the setups folder is the current one; the log was switched on.
  EXPECT_EQ(Keys(bag), "SearchCriteria SetupsInitialDirectory DebugEnableMessageLog");
}

TEST_F(Cvn73100ScopeTest, WritesEveryKeyInOrderAndReadsTheFormBack) {
  scope->SetCountryCode(Cvn73100_Language_French);
  scope->SetAddress("com2::baud=19200");
  scope->SetFontName("Arial");
  scope->SetFontSize(11);
  scope->SetDebugEnabled(true);
  scope->SetDontShowIOHandshakeWarning(true);
  scope->SetLastIOHandshakeAddress("COM2::Baud=19200");
  scope->SetInitialSearchMode(true);
  scope->SetTXDelay(20);
  scope->SetResetOnInitialize(true);
  scope->SetCheckIDOnInitialize(true);
  scope->SetAddressInstrumentID("M,73135D,S,F");
  scope->SetDTROnly(true);
  scope->Setups()->SetInitialDirectory("/setups");
  scope->Setups()->SetGetLearnStringOnAdd(false);
  scope->Setups()->SetLastInstrumentSetup("Two");
  scope->Setups()->Add("One");
  scope->Setups()->Add("Two");
  scope->SetSupportMessageMode(CDebug::MODE_EVENT | CDebug::MODE_MESSAGE_BOX | CDebug::MODE_LOG | CDebug::MODE_ASSERT);

  MemoryPropertyBag bag;
  scope->WriteProperties(bag);
  EXPECT_EQ(Keys(bag),
            "CountryCode Address FontName FontSize DebugEnabled DontShowSetupIOConfigurationWarning "
            "LastIOHandshakeAddress InitialSearchMode TXDelay ResetOnIntialize CheckIDOnIntialize "
            "ActiveAddressInstrumentID DTROnly SearchCriteria SetupsInitialDirectory SetupsGetLearnStringOnAdd "
            "LastInstrumentSetup SetupCount SetupName1 SetupName2 DebugEnableEvent DebugEnableMessageBox "
            "DebugEnableMessageLog DebugAssert");
  EXPECT_EQ(bag.ReadString("Address", ""), "COM2::Baud=19200,Handshake=DTR_DSR");

  host.ClearRecords();
  host.userMode = true;
  Cvn73100Scope other;
  other.ReadProperties(bag);
  MemoryPropertyBag again;
  other.WriteProperties(again);
  EXPECT_EQ(again.Entries(), bag.Entries());
  // Loading a form is no change; the connection follows the configuration and the host.
  EXPECT_TRUE(host.propertyChanges.empty());
  EXPECT_EQ(other.Connection()->AutomationServerAddress(), "COM2::Baud=19200,Handshake=DTR_DSR");
  EXPECT_TRUE(other.Connection()->AmbientUserMode());
  EXPECT_TRUE(other.Connection()->DebugEnabled());
  EXPECT_EQ(other.Setups()->Count(), 2);
  EXPECT_EQ(Messages::LanguageBase(), Messages::FRENCH);
}

TEST_F(Cvn73100ScopeTest, AddressHandsTheServerFormToTheConnectionAndForgetsTheIdentity) {
  const struct {
    const char* address;
    const char* stored;
    const char* server;
    bool changes;
  } cases[] = {
      {"GPIB1::5", "GPIB1::5::INSTR", "GPIB1::5::INSTR", true},
      {"GPIB1::5::INSTR", "GPIB1::5::INSTR", "GPIB1::5::INSTR", false},
      {"gpib1::5::instr", "GPIB1::5::INSTR", "GPIB1::5::INSTR", false},
      {"COM1", "COM1", "COM1::Handshake=XON_XOFF", true},
      {"COM2::Baud=2400", "COM2::Baud=2400", "COM2::Baud=2400,Handshake=XON_XOFF", true},
  };
  scope->SetSupportMessageMode(CDebug::MODE_EVENT);
  for (const auto& c : cases) {
    scope->SetAddressInstrumentID("id");
    host.ClearRecords();
    scope->SetAddress(c.address);
    EXPECT_EQ(scope->Address(), c.stored);
    EXPECT_EQ(scope->Connection()->AutomationServerAddress(), c.server);
    EXPECT_EQ(scope->AddressInstrumentID(), c.changes ? "" : "id") << c.address;
    const std::vector<std::string> expected =
        c.changes ? std::vector<std::string>{"AddressInstrumentID", "Address"} : std::vector<std::string>{};
    EXPECT_EQ(host.propertyChanges, expected) << c.address;
  }
  // The connection never saw a serial address without its handshake.
  EXPECT_TRUE(supportMessages.empty());

  scope->SetAddressInstrumentID("id");
  host.ClearRecords();
  EXPECT_EQ(ErrorOf([&] { scope->SetAddress("COM5"); }), kInvalidPropertyValue);
  EXPECT_EQ(scope->Address(), "COM2::Baud=2400");
  EXPECT_EQ(scope->AddressInstrumentID(), "id");
  EXPECT_TRUE(host.propertyChanges.empty());
}

TEST_F(Cvn73100ScopeTest, KeepsTheIdentityTheConnectionReports) {
  scope->Initialize();
  ASSERT_TRUE(scope->InstrumentConnected());
  EXPECT_EQ(scope->AddressInstrumentID(), scope->Connection()->IDNQuery());
  EXPECT_NE(scope->AddressInstrumentID().find("73135D"), std::string::npos);
  scope->Initialize();
  EXPECT_EQ(host.Changes("AddressInstrumentID"), 1);
}

TEST_F(Cvn73100ScopeTest, CountryCodeSelectsTheLanguageOrChangesNothing) {
  scope->SetCountryCode(Cvn73100_Language_Traditional_Chinese);
  EXPECT_EQ(Messages::LanguageBase(), Messages::TRADITIONAL_CHINESE);
  EXPECT_EQ(scope->FontName(), Messages::LoadIn(Messages::TRADITIONAL_CHINESE, 102));
  EXPECT_EQ(scope->FontSize(), std::stoi(Messages::LoadIn(Messages::TRADITIONAL_CHINESE, 103)));
  EXPECT_EQ(host.Changes("CountryCode"), 1);

  scope->SetCountryCode(Cvn73100_Language_English);
  const std::string font = scope->FontName();
  host.ClearRecords();
  EXPECT_EQ(ErrorOf([&] { scope->SetCountryCode(44); }), kInvalidPropertyValue);
  EXPECT_EQ(error->Description(), "Invalid property value.");
  EXPECT_EQ(scope->CountryCode(), Cvn73100_Language_English);
  EXPECT_EQ(scope->FontName(), font);
  EXPECT_TRUE(host.propertyChanges.empty());
}

TEST_F(Cvn73100ScopeTest, ShowsThePagesEachSelectorAsksAndRefusesOtherSelectors) {
  const std::vector<std::string> all{"Cvn73100PPSrchIO", "Cvn73100PPSrchCriteria", "Cvn73100PPSetIO",
                                     "Cvn73100PPSetup"};
  const struct {
    std::int16_t selector;
    std::vector<std::string> pages;
    int initialPage;
  } cases[] = {
      {0, all, 0},
      {1, all, 3},
      {2, {"Cvn73100PPSrchIO", "Cvn73100PPSrchCriteria"}, 0},
      {3, {"Cvn73100PPSrchCriteria", "Cvn73100PPSetIO"}, 1},
  };
  for (const auto& c : cases) {
    host.ClearRecords();
    scope->ShowPropertyPages(c.selector);
    ASSERT_EQ(host.pagesShown.size(), 1u);
    EXPECT_EQ(host.pagesShown[0].pages, c.pages) << c.selector;
    EXPECT_EQ(host.pagesShown[0].initialPage, c.initialPage) << c.selector;
    EXPECT_EQ(scope->PropertyPages(), all);
  }
  scope->SetSupportMessageMode(CDebug::MODE_EVENT);
  host.ClearRecords();
  EXPECT_EQ(ErrorOf([&] { scope->ShowPropertyPages(4); }), kInvalidPropertyValue);
  EXPECT_EQ(error->Source(), "QD 73100 Scope Control");
  EXPECT_EQ(error->Description(), "Asian languages are not supported on this computer.");
  EXPECT_TRUE(host.pagesShown.empty());
  EXPECT_EQ(supportMessages.size(), 1u);
}

TEST_F(Cvn73100ScopeTest, LinkMembersAnnounceOnlyRealChanges) {
  IPPCvn73100Scope& link = *scope;
  using Get = bool (IPPCvn73100Scope::*)() const;
  using Set = void (IPPCvn73100Scope::*)(bool);
  const struct {
    const char* member;
    Set set;
    Get get;
  } flags[] = {
      {"DontShowIOHandshakeWarning", &IPPCvn73100Scope::SetDontShowIOHandshakeWarning,
       &IPPCvn73100Scope::DontShowIOHandshakeWarning},
      {"SearchIOExists", &IPPCvn73100Scope::SetSearchIOExists, &IPPCvn73100Scope::SearchIOExists},
      {"SearchCriteriaExists", &IPPCvn73100Scope::SetSearchCriteriaExists, &IPPCvn73100Scope::SearchCriteriaExists},
      {"SetIOExists", &IPPCvn73100Scope::SetSetIOExists, &IPPCvn73100Scope::SetIOExists},
      {"SetupsExists", &IPPCvn73100Scope::SetSetupsExists, &IPPCvn73100Scope::SetupsExists},
      {"DTROnly", &IPPCvn73100Scope::SetDTROnly, &IPPCvn73100Scope::DTROnly},
      {"InitialSearchMode", &IPPCvn73100Scope::SetInitialSearchMode, &IPPCvn73100Scope::InitialSearchMode},
  };
  for (const auto& f : flags) {
    host.ClearRecords();
    for (const bool value : {false, true, true}) (link.*f.set)(value);
    EXPECT_TRUE((link.*f.get)()) << f.member;
    EXPECT_EQ(host.propertyChanges, std::vector<std::string>{std::string("IPPCvn73100Scope_") + f.member});
  }
  host.ClearRecords();
  link.SetLastIOHandshakeAddress("COM1");
  link.SetLastIOHandshakeAddress("COM1");
  link.SetCenterPropertyPages(false);
  EXPECT_FALSE(link.CenterPropertyPages());
  EXPECT_EQ(host.propertyChanges, std::vector<std::string>{"IPPCvn73100Scope_LastIOHandshakeAddress"});
}

TEST_F(Cvn73100ScopeTest, DTROnlyMovesAnActiveSerialPortToDTR) {
  scope->SetAddress("COM1");
  host.ClearRecords();
  scope->SetDTROnly(true);
  EXPECT_EQ(scope->Address(), "COM1::Handshake=DTR_DSR");
  EXPECT_EQ(scope->Connection()->AutomationServerAddress(), "COM1::Handshake=DTR_DSR");
  EXPECT_EQ(host.propertyChanges, (std::vector<std::string>{"IPPCvn73100Scope_DTROnly", "Address"}));
}

TEST_F(Cvn73100ScopeTest, FollowsAConfigurationChangedByAPage) {
  auto copy = scope->IOConfigurationPropertyPage();
  copy->SetActiveAddressString("COM3::Baud=38400");
  EXPECT_EQ(scope->Address(), "GPIB0::7::INSTR");
  scope->IOConfigurationControl()->Copy(*copy);
  scope->IOConfigurationChanged();
  EXPECT_EQ(scope->Connection()->AutomationServerAddress(), "COM3::Baud=38400,Handshake=XON_XOFF");
  EXPECT_EQ(host.propertyChanges, (std::vector<std::string>{"Address", "SearchCriteria"}));

  scope->SetNotifyIOConfigurationChanged(1);
  host.ClearRecords();
  scope->IOConfigurationChanged();
  EXPECT_EQ(host.Changes("IPPCvn73100Scope_IOConfigurationChanged"), 1);
}

TEST_F(Cvn73100ScopeTest, SearchCriteriaIsTheConfigurationsTables) {
  Variant criteria = scope->SearchCriteria();
  scope->SetSearchCriteria(criteria);
  EXPECT_TRUE(host.propertyChanges.empty());
  criteria.AsArray()[5].AsArray()[1].AsArray()[0] = Variant(std::int32_t{19200});
  scope->SetSearchCriteria(criteria);
  EXPECT_EQ(scope->IOConfiguration()->BaudRate(2), 19200);
  EXPECT_EQ(host.propertyChanges, std::vector<std::string>{"SearchCriteria"});
  criteria.AsArray()[5].AsArray()[1].AsArray()[0] = Variant(std::int32_t{4800});
  EXPECT_EQ(ErrorOf([&] { scope->SetSearchCriteria(criteria); }), kInvalidPropertyValue);
  EXPECT_EQ(scope->IOConfiguration()->BaudRate(2), 19200);
}

TEST_F(Cvn73100ScopeTest, PassesOnWhatItsPartsAnnounce) {
  scope->SetSupportMessageMode(CDebug::MODE_EVENT);
  scope->SetTXDelay(10);
  scope->SetResetOnInitialize(true);
  scope->SetResetOnInitialize(true);
  scope->SetCheckIDOnInitialize(true);
  EXPECT_EQ(host.propertyChanges,
            (std::vector<std::string>{"DebugMode", "TXDelay", "ResetOnInitialize", "CheckIDOnInitialize"}));
  CDebug::Instance().Message(5, "text", "c", "p", "");
  ASSERT_EQ(supportMessages.size(), 1u);
  EXPECT_NE(supportMessages[0].find("text\r\n"), std::string::npos);
}

TEST_F(Cvn73100ScopeTest, ScreenCentreUserModeAboutBoxAndTerminate) {
  host.screenSize = {1366, 769};
  EXPECT_EQ(scope->ScreenCenterWidthInPixels(), 683);
  EXPECT_EQ(scope->ScreenCenterHeightInPixels(), 384);

  host.userMode = false;
  scope->AmbientChanged();
  EXPECT_FALSE(scope->Connection()->AmbientUserMode());
  host.userMode = true;
  scope->AmbientChanged();
  EXPECT_TRUE(scope->Connection()->AmbientUserMode());

  scope->AboutBox();
  ASSERT_EQ(host.aboutBoxes.size(), 1u);
  EXPECT_EQ(host.aboutBoxes[0].title, "About QD 73100 Scope Control");
  EXPECT_EQ(host.aboutBoxes[0].lines.at(1), "Version: " + Cvn73100Scope::Version());

  auto setups = scope->Setups();
  setups->Add("A");
  setups->Add("B");
  scope->Terminate();
  EXPECT_EQ(setups->Count(), 0);
  EXPECT_EQ(scope->Setups(), nullptr);
  scope->Terminate();
}

}  // namespace
}  // namespace cvn73100
