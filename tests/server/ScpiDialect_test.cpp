// The server and the simulator speak keywords for enumerated settings, on every kind of line, and the
// instrument's refusals reach the caller with the instrument's own number and text.
#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "iolib/IOManager.h"
#include "platform/ScpiMnemonics.h"
#include "server/Cvn73100Server.h"
#include "server/ScpiChannel.h"
#include "server/ServerError.h"
#include "simulator/InstrumentPort.h"
#include "simulator/PrologixAdapter.h"
#include "simulator/PtyServer.h"
#include "tests/support/SimulatedScope.h"

namespace cvn73100::server {
namespace {

struct EnumeratedSetting {
  const char* name;
  std::span<const scpi::Mnemonic> table;
  std::function<void(IAutomationServer&, std::int32_t)> set;
  std::function<std::int32_t(IAutomationServer&)> get;
};

template <class E>
E As(std::int32_t value) {
  return static_cast<E>(value);
}

const EnumeratedSetting kSettings[] = {
    {"acquisition type", scpi::ACQUISITION_TYPES,
     [](auto& s, auto v) { s.Acquisition().SetType(As<Cvn73100_AcquisitionType>(v)); },
     [](auto& s) { return s.Acquisition().Type(); }},
    {"channel coupling", scpi::CHANNEL_COUPLINGS,
     [](auto& s, auto v) { s.AnalogChannels().SetCoupling(Cvn73100_Channel_2, As<Cvn73100_ProbeCoupling>(v)); },
     [](auto& s) { return s.AnalogChannels().Coupling(Cvn73100_Channel_2); }},
    {"time mode", scpi::TIME_MODES, [](auto& s, auto v) { s.Timebase().SetMode(As<Cvn73100_TimeMode>(v)); },
     [](auto& s) { return s.Timebase().Mode(); }},
    {"time reference", scpi::TIME_REFERENCES,
     [](auto& s, auto v) { s.Timebase().SetReference(As<Cvn73100_TimeReference>(v)); },
     [](auto& s) { return s.Timebase().Reference(); }},
    {"trigger sweep", scpi::TRIGGER_SWEEPS, [](auto& s, auto v) { s.Trigger().SetMode(As<Cvn73100_TriggerMode>(v)); },
     [](auto& s) { return s.Trigger().Mode(); }},
    {"trigger source", scpi::TRIGGER_SOURCES,
     [](auto& s, auto v) { s.Trigger().SetSource(As<Cvn73100_TriggerSource>(v)); },
     [](auto& s) { return s.Trigger().Source(); }},
    {"trigger slope", scpi::TRIGGER_SLOPES, [](auto& s, auto v) { s.Trigger().SetSlope(As<Cvn73100_TriggerSlope>(v)); },
     [](auto& s) { return s.Trigger().Slope(); }},
    {"trigger coupling", scpi::TRIGGER_COUPLINGS,
     [](auto& s, auto v) { s.Trigger().SetCoupling(As<Cvn73100_TriggerCoupling>(v)); },
     [](auto& s) { return s.Trigger().Coupling(); }},
    {"display", scpi::ON_OFF,
     [](auto& s, auto v) { s.Trace().SetDisplay(Cvn73100_Channel_D9, As<Cvn73100_OnOffState>(v)); },
     [](auto& s) { return s.Trace().Display(Cvn73100_Channel_D9); }},
};

// One simulated instrument reached three ways: the simulated bus, a serial line on a pseudo-terminal, and a
// Prologix adapter on a pseudo-terminal.
class Lines : public ::testing::TestWithParam<const char*> {
 protected:
  Lines()
      : port(*sim.serialScope, sim::InstrumentPort::Line::Serial), pty(port), usb(sim::PrologixAdapter::Model::Usb) {
    usb.Attach(7, *sim.scope);
    prologix = std::make_unique<sim::PtyServer>(usb);
    io::BoardMap map = io::BoardMap::FromText(
        "COM1 = " + pty.DevicePath() + "\nGPIB0 = sim\nGPIB2 = prologix-serial:" + prologix->DevicePath() + "\n");
    auto manager = std::make_shared<io::IOManager>(map);
    manager->SetSimulatedBus(0, sim.bus);
    server = std::make_unique<Cvn73100Server>(manager);
    server->OpenConnection(GetParam());
  }

  test::SimulatedScope sim;
  sim::InstrumentPort port;
  sim::PtyServer pty;
  sim::PrologixAdapter usb;
  std::unique_ptr<sim::PtyServer> prologix;
  std::unique_ptr<Cvn73100Server> server;
};

TEST_P(Lines, EveryEnumeratedValueIsSetAndReadBack) {
  for (const EnumeratedSetting& setting : kSettings) {
    for (const scpi::Mnemonic& m : setting.table) {
      if (scpi::FindValue(setting.table, m.value) != &m) continue;  // an alias read only
      setting.set(*server, m.value);
      EXPECT_EQ(setting.get(*server), m.value) << setting.name << " " << m.keyword;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Server, Lines,
                         ::testing::Values("GPIB0::7::INSTR", "COM1::Handshake=DTR_DSR", "GPIB2::7::INSTR"));

// With XON/XOFF flow control the line itself takes the bytes 0x11 and 0x13: waveforms come as text, and the
// binary transfers are refused before a byte is sent, naming the remedy.
TEST(XonXoffLine, BinaryTransfersAreRefusedAndWaveformsComeAsText) {
  test::SimulatedScope sim;
  sim::InstrumentPort port(*sim.serialScope, sim::InstrumentPort::Line::Serial);
  sim::PtyServer pty(port);
  auto manager = std::make_shared<io::IOManager>(io::BoardMap::FromText("COM1 = " + pty.DevicePath() + "\n"));
  Cvn73100Server server(manager);
  server.OpenConnection("COM1::Handshake=XON_XOFF");
  const std::function<void()> binary[] = {[&] { server.GetScreenImage(); }, [&] { server.Utilities().ReadStateData(); },
                                          [&] {
                                            server.Utilities().WriteStateData(Bytes{0x11, 0x13});
                                          }};
  for (const auto& transfer : binary) {
    try {
      transfer();
      ADD_FAILURE() << "a binary transfer crossed an XON/XOFF line";
    } catch (const ScopeError& error) {
      EXPECT_EQ(ServerErrorCondition(error), SERVERERR_UNSUPPORTED);
      EXPECT_NE(error.Description().find("Handshake=DTR_DSR"), std::string::npos) << error.Description();
    }
  }
  Variant time, volts;
  server.GetWaveformData(Cvn73100_Channel_1, Cvn73100_DataPoints_1000, time, volts);
  EXPECT_EQ(volts.AsDoubles().size(), 1000u);
}

// Commands the instrument refuses, sent through the channel the server uses.
TEST(InstrumentErrors, TheErrorNamesNumberTextAndCommand) {
  test::SimulatedScope sim;
  auto model = test::SimulatedScope::Make("73105B", 8);
  sim.bus->Attach(8, model);
  ScpiChannel channel;
  channel.SetIOManager(sim.manager);
  channel.Open("GPIB0::8::INSTR");
  channel.IO().SetTimeout(200);
  const struct {
    std::function<void()> action;
    const char* description;
  } cases[] = {
      {[&] { channel.Set(":ACQuire:TYPE 3"); }, "-104,\"Data type error\" after :ACQuire:TYPE 3"},
      {[&] { channel.Set(":TRIGger:SLOPe SIDEways"); },
       "-224,\"Illegal parameter value\" after :TRIGger:SLOPe SIDEways"},
      {[&] { channel.Query(":TRIGger:SLOPe? 2"); }, "-108,\"Parameter not allowed\" after :TRIGger:SLOPe? 2"},
      {[&] { channel.QueryBlock(":DISPlay:DATA? GIF", 1 << 20); },
       "-224,\"Illegal parameter value\" after :DISPlay:DATA? GIF"},
      {[&] {
         channel.Set(":CHANnel2:DISPlay 0;:WAVeform:SOURce CHAN2");
         channel.Query(":WAVeform:PREamble?");
       },
       "-221,\"Settings conflict\" after :WAVeform:PREamble?"},
  };
  for (const auto& c : cases) {
    try {
      c.action();
      ADD_FAILURE() << "accepted: " << c.description;
    } catch (const ScopeError& error) {
      EXPECT_EQ(ServerErrorCondition(error), SERVERERR_INSTRUMENT);
      EXPECT_NE(error.Description().find(c.description), std::string::npos) << error.Description();
    }
  }
  EXPECT_TRUE(channel.DrainErrors().empty());
}

}  // namespace
}  // namespace cvn73100::server
