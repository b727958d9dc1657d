// The identification query through the real I/O library: the simulated GPIB bus in this process, and a
// simulated instrument behind a pseudo-terminal reached through the serial backend.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "connection/CQueryInstrument.h"
#include "dialogs/Messages.h"
#include "ioconfig/CIOconfiguration.h"
#include "iolib/BoardMap.h"
#include "iolib/IOManager.h"
#include "simulator/Instrument.h"
#include "simulator/InstrumentPort.h"
#include "simulator/PtyServer.h"
#include "simulator/SimulatedBus.h"
#include "tests/support/Process.h"
#include "tests/support/ScriptedHost.h"

namespace cvn73100 {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

const sim::Identity kSupported{"Corvane Technologies", "73135D", "QX40001234", "A.02.10"};
const sim::Identity kOtherSupported{"ACME", "73105B", "1", "B.01"};

class CQueryInstrumentSim : public ::testing::Test {
 protected:
  void SetUp() override {
    Messages::SetLanguageBase(Messages::ENGLISH);
    manager = std::make_shared<io::IOManager>(
        io::BoardMap::FromText("GPIB0 = sim\nCOM1 = " + pty->DevicePath() + "\n", "test"));
    manager->SetSimulatedBus(0, bus);
    query.Initialize(1, config, manager);
  }

  std::shared_ptr<sim::Instrument> AttachToBus(int address, const sim::Identity& identity,
                                               const sim::Faults& faults = {}) {
    auto instrument = std::make_shared<sim::Instrument>(sim::InstrumentConfig{identity, faults, address});
    bus->Attach(address, instrument);
    return instrument;
  }

  // The instrument on the pseudo-terminal; declared before its port and server, which must go first.
  sim::Instrument serialInstrument{sim::InstrumentConfig{kSupported, {}, 7}};
  sim::InstrumentPort serialPort{serialInstrument, sim::InstrumentPort::Line::Serial};
  std::unique_ptr<sim::PtyServer> pty = std::make_unique<sim::PtyServer>(serialPort);
  std::shared_ptr<sim::SimulatedBus> bus = std::make_shared<sim::SimulatedBus>();
  std::shared_ptr<io::IOManager> manager;
  std::shared_ptr<CIOconfiguration> config = std::make_shared<CIOconfiguration>();
  test::ScriptedHost host;
  test::ScopedHost scopedHost{host};
  CQueryInstrument query;
};

TEST_F(CQueryInstrumentSim, SerialQueryUsesThePortsSettings) {
  sim::Faults strict;
  strict.wrongParameter = true;
  strict.requiredBaud = 19200;
  strict.requiredHandshake = RS232_HandShake_DTR_DSR;
  serialInstrument.SetFaults(strict);
  config->SetBaudRate(1, 19200);
  config->SetHandshake(1, RS232_HandShake_DTR_DSR);

  std::string reply;
  EXPECT_EQ(query.Test(0, "COM1::Baud=19200,Handshake=DTR_DSR", reply), IDNSupported);
  EXPECT_EQ(reply, kSupported.Reply());
  ASSERT_EQ(host.boxes.size(), 1u);
  EXPECT_THAT(host.boxes[0].prompt, StartsWith(Messages::Load(226) + "\r\n\r\n" + Messages::Load(227)));
  EXPECT_THAT(host.boxes[0].prompt, HasSubstr("\r\n\r\n    COM1"));

  config->SetBaudRate(1, 9600);  // the instrument no longer understands the line
  EXPECT_EQ(query.RS232IDNQuery("COM1", reply), IDNNoResponse);
  EXPECT_EQ(reply, "");

  config->SetBaudRate(1, 19200);
  EXPECT_EQ(query.RS232IDNQuery("COM1", reply), IDNSupported) << "the failed query left nothing behind";
  EXPECT_EQ(reply, kSupported.Reply());
}

TEST_F(CQueryInstrumentSim, LateReplyOnTheSerialLineIsNotTheNextAnswer) {
  sim::Faults late;
  late.lateReplyMs = 2600;
  serialInstrument.SetIdentity({"OLD", "73199B", "1", "A"});
  serialInstrument.SetFaults(late);
  std::string reply;
  EXPECT_EQ(query.RS232IDNQuery("COM1", reply), IDNNoResponse);

  // The stale reply reaches the line while the next query is still setting the port up.
  serialInstrument.SetFaults({});
  serialInstrument.SetIdentity(kOtherSupported);
  query.Initialize(150, config, manager);
  EXPECT_EQ(query.RS232IDNQuery("COM1", reply), IDNSupported);
  EXPECT_EQ(reply, "ACME,73105B,1,B.01");
}

TEST_F(CQueryInstrumentSim, ManyQueriesLeakNoFileDescriptors) {
  AttachToBus(7, kSupported);
  std::string reply;
  // The first serial open may load what the serial library keeps for the process.
  ASSERT_EQ(query.RS232IDNQuery("COM1", reply), IDNSupported);
  const int before = test::OpenDescriptorCount();
  for (int i = 0; i < 40; ++i) {
    ASSERT_EQ(query.RS232IDNQuery("COM1", reply), IDNSupported) << i;
  }
  for (int i = 0; i < 200; ++i) {
    ASSERT_EQ(query.GPIBIDNQuery("GPIB0::7::INSTR", reply), IDNSupported) << i;
    ASSERT_EQ(query.GPIBIDNQuery("GPIB0::21::INSTR", reply), IDNNoResponse) << i;
    ASSERT_EQ(query.GPIBIDNQuery("GPIB2::7::INSTR", reply), IDNPortNotFound) << i;
  }
  EXPECT_EQ(test::OpenDescriptorCount(), before);
}

}  // namespace
}  // namespace cvn73100
