#include "iolib/IOManager.h"

#include <gtest/gtest.h>

#include "iolib/IOLibrary.h"
#include "iolib/ResourceAddress.h"
#include "platform/Components.h"
#include "simulator/Instrument.h"
#include "simulator/InstrumentPort.h"
#include "simulator/PtyServer.h"
#include "simulator/SimulatedBus.h"
#include "tests/iolib/IoTestSupport.h"

namespace cvn73100::io {
namespace {

using test::ConditionOf;

TEST(ResourceAddressTest, ParsesTheNamesOfPortsAndAddresses) {
  const struct {
    const char* text;
    const char* canonical;  // nullptr: not a resource
  } cases[] = {
      {"COM1", "COM1"},
      {"COM2::Baud=19200,Handshake=DTR_DSR", "COM2"},
      {"COM5", nullptr},
      {"COM12", nullptr},
      {"GPIB0::7::INSTR", "GPIB0::7::INSTR"},
      {"gpib3::30::instr", "GPIB3::30::INSTR"},
      {"GPIB4::7::INSTR", nullptr},
      {"GPIB0::7::0::INSTR", nullptr},
      {"GPIB0::INTFC", "GPIB0::INTFC"},
      {"GPIB0", nullptr},
      {"ASRL1::INSTR", nullptr},
      {"", nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const auto address = ResourceAddress::Parse(c.text);
    ASSERT_EQ(address.has_value(), c.canonical != nullptr);
    if (address) {
      EXPECT_EQ(address->Name(), c.canonical);
    }
  }
}

TEST(ResourceAddressTest, PatternsMatchThePortPartOrTheWholeName) {
  const struct {
    const char* pattern;
    const char* name;
    bool match;
  } cases[] = {{"COM*", "COM3", true},
               {"com3", "COM3", true},
               {"COM3", "COM1", false},
               {"COM?", "COM4", true},
               {"COM*", "GPIB0::INTFC", false},
               {"GPIB*", "GPIB2::INTFC", true},
               {"GPIB0", "GPIB0::7::INSTR", true},
               {"GPIB0", "GPIB1::7::INSTR", false},
               {"GPIB?*::INSTR", "GPIB0::7::INSTR", true},
               {"GPIB?*::INSTR", "GPIB0::INTFC", false},
               {"GPIB0::?*::INSTR", "GPIB0::12::INSTR", true},
               {"*", "GPIB3::INTFC", true},
               {"GPIB*::*INSTR", "GPIB1::7::INSTR", true},
               {"", "COM1", false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.pattern) + " vs " + c.name);
    EXPECT_EQ(ResourceAddress::Matches(c.pattern, c.name), c.match);
  }
}

class IOManagerTest : public ::testing::Test {
 protected:
  IOManagerTest() : m_port(m_instrument, sim::InstrumentPort::Line::Serial), m_pty(m_port) {
    BoardMap map = BoardMap::FromText("COM1 = " + m_pty.DevicePath() +
                                      "\nCOM2 = /dev/cvn-no-such-node\nCOM3 = sim\nCOM4 = none\n"
                                      "GPIB0 = sim\nGPIB2 = linux-gpib:0\nLIBGPIB = /nonexistent/libgpib.so.0\n");
    m_manager = std::make_unique<IOManager>(map);
    m_bus = std::make_shared<sim::SimulatedBus>();
    m_bus->Attach(7, std::make_shared<sim::Instrument>());
    m_bus->Attach(12, std::make_shared<sim::Instrument>());
    m_manager->SetSimulatedBus(0, m_bus);
  }

  sim::Instrument m_instrument;
  sim::InstrumentPort m_port;
  sim::PtyServer m_pty;
  std::shared_ptr<sim::SimulatedBus> m_bus;
  std::unique_ptr<IOManager> m_manager;
};

TEST_F(IOManagerTest, ListsWhatIsThereByPattern) {
  using Names = std::vector<std::string>;
  const Names gpib0 = {"GPIB0::INTFC", "GPIB0::7::INSTR", "GPIB0::12::INSTR"};
  const struct {
    const char* pattern;
    Names names;
  } cases[] = {
      {"COM*", {"COM1", "COM3"}},
      {"COM2", {}},
      {"COM4", {}},
      {"GPIB*", gpib0},
      {"GPIB1", {}},
      {"GPIB2", {}},
      {"GPIB0::?*::INSTR", {"GPIB0::7::INSTR", "GPIB0::12::INSTR"}},
      {"gpib0::12::instr", {"GPIB0::12::INSTR"}},
      {"?*", {"COM1", "COM3", "GPIB0::INTFC", "GPIB0::7::INSTR", "GPIB0::12::INSTR"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.pattern);
    EXPECT_EQ(m_manager->FindResources(c.pattern), c.names);
  }
  m_bus->Detach(12);
  EXPECT_EQ(m_manager->FindResources("GPIB0"), (Names{"GPIB0::INTFC", "GPIB0::7::INSTR"}));
}

TEST_F(IOManagerTest, OpensKnownResourcesAndRefusesTheRest) {
  const struct {
    const char* address;
    const char* type;  // nullptr: open fails
    const char* name = "";
  } cases[] = {
      {"COM1::Baud=9600,Handshake=DTR_DSR", "ASRL", "COM1"},
      {"gpib0::7::instr", "GPIB", "GPIB0::7::INSTR"},
      {"GPIB0::5::INSTR", "GPIB", "GPIB0::5::INSTR"},  // no presence check at open
      {"COM2", nullptr},
      {"GPIB1::7::INSTR", nullptr},
      {"GPIB2::7::INSTR", nullptr},
      {"GPIB0::INTFC", nullptr},
      {"GPIB0::31::INSTR", nullptr},
      {"TCPIP0::1.2.3.4::INSTR", nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.address);
    if (c.type == nullptr) {
      EXPECT_EQ(ConditionOf([&] { m_manager->Open(c.address); }), IOERR_OPEN_FAILED);
      continue;
    }
    const auto io = m_manager->Open(c.address);
    EXPECT_EQ(io->IOType(), c.type);
    EXPECT_EQ(io->ResourceName(), c.name);
    EXPECT_EQ(io->Serial() != nullptr, std::string(c.type) == "ASRL");
    io->Port().Close();
  }
}

TEST(IOLibraryTest, RegistersAManagerOverTheEmbeddedDefault) {
  test::ScopedEnv conf("CVN73100_IO_CONF", "/nonexistent/cvn73100-io.conf");
  test::ScopedEnv gpib0("CVN73100_GPIB0", std::nullopt);
  RegisterIOLibrary();
  ASSERT_TRUE(Components::HasIOManager());
  const auto manager = std::dynamic_pointer_cast<IOManager>(Components::CreateIOManager());
  ASSERT_TRUE(manager);
  EXPECT_TRUE(manager->UsingEmbeddedDefault());
  EXPECT_EQ(manager->FindResources("GPIB0"),
            (std::vector<std::string>{"GPIB0::INTFC", "GPIB0::3::INSTR", "GPIB0::7::INSTR", "GPIB0::12::INSTR"}));
  const std::string description = manager->DescribeBoardMap();
  EXPECT_NE(description.find(" 7  Corvane Technologies,73135D,QX40001234,A.02.10"), std::string::npos) << description;
  EXPECT_EQ(test::Query(*manager->Open("GPIB0::7::INSTR"), "*IDN?"), "Corvane Technologies,73135D,QX40001234,A.02.10");
}

}  // namespace
}  // namespace cvn73100::io
