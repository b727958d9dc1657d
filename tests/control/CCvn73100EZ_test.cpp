#include "connection/CCvn73100EZ.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/Components.h"
#include "server/Cvn73100Server.h"
#include "server/ServerError.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/SimulatedScope.h"
#include "tests/support/TempDir.h"

namespace cvn73100 {
namespace {

constexpr std::int32_t kFailedConnection = -2147221445;
constexpr std::int32_t kInvalidPropertyValue = -2147221124;
constexpr const char* kIdentity = "Corvane Technologies,73135D,QX40001234,A.02.10";

class CCvn73100EZTest : public ::testing::Test {
 protected:
  void SetUp() override {
    server::RegisterAutomationServer();
    ez = std::make_unique<CCvn73100EZ>();
    ez->SetIOManager(sim.manager);
    ez->SetTXDelay(0);
    ez->InstrumentID.Connect([this](const std::string& id) { instrumentIDs.push_back(id); });
    ez->PropertyChanged.Connect([this](const std::string& name) { changes.push_back(name); });
    changes.clear();
  }
  void TearDown() override { ez.reset(); }

  std::int32_t ErrorNumber(const std::function<void()>& action) {
    const ScopeError e = test::ErrorOf(action);
    lastError = e.Description();
    lastSource = e.Source();
    return e.Number();
  }

  test::SupportLog support;
  test::SimulatedScope sim;
  std::unique_ptr<CCvn73100EZ> ez;
  std::vector<std::string>& supportMessages = support.blocks;
  std::vector<std::string> instrumentIDs;
  std::vector<std::string> changes;
  std::string lastError;
  std::string lastSource;
};

TEST_F(CCvn73100EZTest, InitializeWithAndWithoutResetAndIdentityCheck) {
  sim::ScopeState changed;
  changed.timebaseRange = 5e-3;
  const struct {
    bool reset;
    bool checkID;
    bool stateIsDefault;
  } cases[] = {{false, false, false}, {true, false, true}, {false, true, false}, {true, true, true}};
  for (const auto& c : cases) {
    sim.scope->SetState(changed);
    ez->SetResetOnInitialize(c.reset);
    ez->SetCheckIDOnInitialize(c.checkID);
    instrumentIDs.clear();
    ez->Initialize();
    EXPECT_TRUE(ez->InstrumentConnected());
    EXPECT_EQ(ez->ConnectionName(), "GPIB0::7::INSTR");
    EXPECT_EQ(instrumentIDs, std::vector<std::string>{kIdentity});
    EXPECT_EQ(sim.scope->State() == sim::ScopeState{}, c.stateIsDefault) << c.reset << c.checkID;
  }
  EXPECT_EQ(ez->IDNQuery(), kIdentity);
  ez->CloseConnection(false);
  EXPECT_FALSE(ez->InstrumentConnected());
  EXPECT_EQ(ez->ConnectionName(), "");
}

TEST_F(CCvn73100EZTest, FailuresReachTheCallerAndLeaveNothingOpen) {
  const struct {
    const char* address;
    bool checkID;
    std::int32_t error;                                                     // 0: any error
  } cases[] = {{"GPIB0::3::INSTR", true, kFailedConnection},                // a 73199B, refused by the identity check
               {"GPIB3::7::INSTR", false, ObjectError(IOERR_OPEN_FAILED)},  // a board that is not mapped
               {"GPIB0::20::INSTR", false, 0}};                             // nobody listens there
  for (const auto& c : cases) {
    ez->SetAutomationServerAddress(c.address);
    ez->SetCheckIDOnInitialize(c.checkID);
    const std::int32_t error = ErrorNumber([&] { ez->Initialize(); });
    EXPECT_TRUE(c.error ? error == c.error : error != 0) << c.address << ": " << error;
    EXPECT_FALSE(ez->InstrumentConnected()) << c.address;
    EXPECT_EQ(ez->ConnectionName(), "");
  }
  EXPECT_NE(ErrorNumber([&] { CCvn73100EZ().Initialize(); }), 0) << "no I/O manager";

  // Without the check the refused instrument connects.
  ez->SetAutomationServerAddress("GPIB0::3::INSTR");
  ez->Initialize();
  EXPECT_TRUE(ez->InstrumentConnected());
}

TEST_F(CCvn73100EZTest, PropertyPageModeSuppressesTheInstrumentIDEvent) {
  ez->SetPropertyPageMode(true);
  ez->Initialize();
  EXPECT_TRUE(ez->InstrumentConnected());
  EXPECT_TRUE(instrumentIDs.empty());
}

TEST_F(CCvn73100EZTest, DataOperationsConnectOnlyInUserMode) {
  EXPECT_NE(ErrorNumber([&] { ez->Digitize(); }), 0);  // goes to the unconnected server
  EXPECT_FALSE(ez->InstrumentConnected());
  EXPECT_EQ(sim.scope->Running(), sim::RunState::Run);

  ez->SetAmbientUserMode(true);
  ez->Digitize();
  EXPECT_TRUE(ez->InstrumentConnected());
  EXPECT_EQ(sim.scope->Running(), sim::RunState::Stop);
  EXPECT_EQ(ez->Utilities().Model(), "73135D");
}

TEST_F(CCvn73100EZTest, AddressChangesCloseFirstAndWatchTheHandshakeKeyword) {
  ez->Initialize();
  ez->SetAutomationServerAddress("GPIB0::7::INSTR");  // the same address
  EXPECT_TRUE(ez->InstrumentConnected());
  EXPECT_TRUE(supportMessages.empty());

  ez->SetAutomationServerAddress("COM1::Handshake=DTR_DSR");
  EXPECT_FALSE(ez->InstrumentConnected());
  EXPECT_TRUE(supportMessages.empty());

  ez->SetAutomationServerAddress("COM1");
  EXPECT_EQ(ez->AutomationServerAddress(), "COM1");
  EXPECT_EQ(supportMessages.size(), 1u) << "a serial address without its handshake is reported";

  ez->SetAutomationServerAddress("com2::handshake=xon_xoff");  // the keyword in any case
  EXPECT_EQ(supportMessages.size(), 1u);
}

TEST_F(CCvn73100EZTest, SerialConnectionWakesTheInstrumentAndDropsTheLinesOnClose) {
  ez->SetAutomationServerAddress("COM1::Baud=19200,Handshake=DTR_DSR");
  ez->SetCheckIDOnInitialize(true);
  ez->Initialize();
  EXPECT_TRUE(ez->InstrumentConnected());
  EXPECT_EQ(instrumentIDs, std::vector<std::string>{kIdentity});
  auto channel = ez->EZPtr().Utilities().IOChannel();
  ASSERT_EQ(channel->IOType(), "ASRL");
  EXPECT_EQ(channel->Serial()->BaudRate(), 19200);
  EXPECT_TRUE(channel->Serial()->DTRState());
  EXPECT_EQ(ez->EZPtr().Utilities().QueryInstrumentError(), "");  // the bare CR LF is an empty message

  ez->CloseConnection(true);
  EXPECT_FALSE(ez->InstrumentConnected());
  EXPECT_FALSE(channel->Serial()->DTRState());  // held down, not restored
  EXPECT_FALSE(channel->Serial()->RTSState());
}

TEST_F(CCvn73100EZTest, TXDelayRefusesNegativeValuesAndKeepsTheOldOne) {
  ez->SetTXDelay(0);
  EXPECT_TRUE(changes.empty());  // already 0
  ez->SetTXDelay(75);
  EXPECT_EQ(changes, std::vector<std::string>{"TXDelay"});
  EXPECT_EQ(ErrorNumber([&] { ez->SetTXDelay(-1); }), kInvalidPropertyValue);
  EXPECT_EQ(lastError, "Invalid property value.");
  EXPECT_EQ(lastSource, "QD 73100 Scope Control");
  EXPECT_EQ(ez->TXDelay(), 75);
  EXPECT_EQ(supportMessages.size(), 1u);
  ez->SetTXDelay(0);
  EXPECT_EQ(ez->TXDelay(), 0);
}

// Its properties are saved, read and announced through the control (Cvn73100Scope_test).

// A server that shows what the connection handed it.
class RecordingServer : public server::Cvn73100Server {
 public:
  explicit RecordingServer(std::vector<std::string>& log) : m_log(log) {}
  void Enter(Variant& inputBuffer, const Variant& format) override {
    m_log.push_back("Enter " + format.AsString());
    inputBuffer = Variant("reply");
  }
  void GetAllWaveformData(Cvn73100_WaveformPoints points, Variant::Array& data) override {
    m_log.push_back("GetAllWaveformData " + std::to_string(points) + " " + std::to_string(data.size()));
    data.push_back(Variant("channel"));
  }

 private:
  std::vector<std::string>& m_log;
};

TEST_F(CCvn73100EZTest, PassThroughArgumentsReachTheServerAsDocumented) {
  std::vector<std::string> log;
  Components::SetServerFactory([&log](std::shared_ptr<IIOManager>) { return std::make_unique<RecordingServer>(log); });
  CCvn73100EZ recorded;
  Variant reply;
  recorded.Enter(reply);
  recorded.Enter(reply, Variant("B"));
  Variant::Array data{Variant(1.0), Variant(2.0)};
  recorded.GetAllWaveformData(Cvn73100_DataPoints_ALL, data);
  EXPECT_EQ(log, (std::vector<std::string>{"Enter K", "Enter B", "GetAllWaveformData 0 0"}));
  EXPECT_EQ(data.size(), 1u);
  EXPECT_EQ(reply.AsString(), "reply");
}

}  // namespace
}  // namespace cvn73100
