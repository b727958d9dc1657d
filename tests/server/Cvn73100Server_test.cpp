#include "server/Cvn73100Server.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <iterator>

#include "platform/Components.h"
#include "server/ServerError.h"
#include "simulator/Waveform.h"
#include "tests/support/ScriptedIO.h"
#include "tests/support/SimulatedScope.h"
#include "tests/support/TempDir.h"

namespace cvn73100::server {
namespace {

namespace fs = std::filesystem;

std::int32_t ServerCondition(const std::function<void()>& action) {
  const ScopeError e = test::ErrorOf(action);
  return ServerErrorCondition(e) != 0 ? ServerErrorCondition(e) : IOErrorCondition(e);
}

class ServerTest : public ::testing::Test {
 protected:
  void SetUp() override { server.OpenConnection("GPIB0::7::INSTR", 0); }

  test::SimulatedScope sim;
  Cvn73100Server server{sim.manager};
};

TEST_F(ServerTest, IdentityFieldsAndConnectionName) {
  IUtilities& u = server.Utilities();
  EXPECT_EQ(u.Manufacturer(), "Corvane Technologies");
  EXPECT_EQ(u.Model(), "73135D");
  EXPECT_EQ(u.SerialNumber(), "QX40001234");
  EXPECT_EQ(u.FirmwareVersion(), "A.02.10");
  EXPECT_EQ(u.InstrumentModel(), "73135D");
  EXPECT_EQ(u.InstrumentFirmwareVersion(), "A.02.10");
  EXPECT_EQ(server.ConnectionName(), "GPIB0::7::INSTR");
  EXPECT_EQ(u.IOChannel()->IOType(), "GPIB");
  server.CloseConnection();
  EXPECT_EQ(server.ConnectionName(), "");
  EXPECT_EQ(ServerCondition([&] { u.IOChannel(); }), SERVERERR_NOT_CONNECTED);
  EXPECT_EQ(ServerCondition([&] { u.Model(); }), SERVERERR_NOT_CONNECTED);
  EXPECT_EQ(ServerCondition([&] { server.Digitize(); }), SERVERERR_NOT_CONNECTED);
}

TEST_F(ServerTest, CheckInstrumentIDAcceptsOnlySupportedModels) {
  sim.bus->Attach(20, test::SimulatedScope::Make("73135DX", 20));
  sim.bus->Attach(21, test::SimulatedScope::Make("73135d", 21));
  const struct {
    const char* address;
    bool supported;
  } cases[] = {{"GPIB0::7::INSTR", true},
               {"GPIB0::3::INSTR", false},
               {"GPIB0::12::INSTR", false},
               {"GPIB0::20::INSTR", true},
               {"GPIB0::21::INSTR", false}};
  for (const auto& c : cases) {
    server.OpenConnection(c.address);
    EXPECT_EQ(server.Utilities().CheckInstrumentID(0, 0, 0), c.supported) << c.address;
  }
  auto garbage = test::SimulatedScope::Make("73135D", 22);
  garbage->SetFaults(sim::Faults{.garbage = true});
  sim.bus->Attach(22, garbage);
  server.OpenConnection("GPIB0::22::INSTR");
  EXPECT_FALSE(server.Utilities().CheckInstrumentID());
}

TEST_F(ServerTest, ResetRestoresTheDefaultSettings) {
  server.Timebase().SetRange(5e-3);
  server.Acquisition().SetType(Cvn73100_AcquisitionType_Peak);
  server.Utilities().ResetInstrument();
  EXPECT_EQ(sim.scope->State(), sim::ScopeState{});
}

TEST_F(ServerTest, LearnStringFetchedChangedSentBackAndReadAgain) {
  const LearnString original = server.Utilities().ReadStateData();
  ASSERT_TRUE(original.has_value());
  server.Timebase().SetRange(2e-3);
  server.AnalogChannels().SetCoupling(Cvn73100_Channel_2, Cvn73100_ProbeCoupling_AC);
  EXPECT_NE(server.Utilities().ReadStateData(), original);

  server.Utilities().WriteStateData(original);
  EXPECT_EQ(server.Utilities().ReadStateData(), original);
  EXPECT_DOUBLE_EQ(server.Timebase().Range(), 1e-3);
  EXPECT_EQ(server.AnalogChannels().Coupling(Cvn73100_Channel_2), Cvn73100_ProbeCoupling_DC);
  EXPECT_EQ(server.Utilities().QueryInstrumentError(), "");

  EXPECT_EQ(ServerCondition([&] { server.Utilities().WriteStateData(std::nullopt); }), SERVERERR_BAD_ARGUMENT);
}

TEST_F(ServerTest, SettingsReachTheInstrumentAndReadBack) {
  server.Acquisition().SetType(Cvn73100_AcquisitionType_Average);
  server.Acquisition().SetCount(Cvn73100_AcquisitionCount_64);
  server.AnalogChannels().SetDisplay(Cvn73100_Channel_3, Cvn73100_On);
  server.AnalogChannels().SetCoupling(Cvn73100_Channel_3, Cvn73100_ProbeCoupling_GND);
  server.AnalogChannels().SetProbeAttenuation(Cvn73100_Channel_4, Cvn73100_ProbeAttenuation_X20);
  server.AnalogChannels().SetRange(Cvn73100_Channel_2, 0.4);
  server.AnalogChannels().SetOffset(Cvn73100_Channel_2, -0.125);
  server.LogicChannel().SetDisplay(Cvn73100_Logic_D15, Cvn73100_On);
  server.Trace().SetDisplay(Cvn73100_Channel_D3, Cvn73100_On);
  server.Trace().SetDisplay(Cvn73100_Channel_A1, Cvn73100_Off);
  server.Timebase().SetMode(Cvn73100_TimeMode_Roll);
  server.Timebase().SetRange(2e-2);
  server.Timebase().SetDelay(2.5e-6);
  server.Timebase().SetReference(Cvn73100_TimeReference_Left);
  server.Trigger().SetMode(Cvn73100_TriggerMode_AutoLevel);
  server.Trigger().SetSource(Cvn73100_TriggerSource_Logic_D7);
  server.Trigger().SetSlope(Cvn73100_TriggerSlope_Negative);
  server.Trigger().SetLevel(0.75);
  server.Trigger().SetCoupling(Cvn73100_TriggerCoupling_AC);

  sim::ScopeState expected;
  expected.acquireType = 1;
  expected.acquireCount = 64;
  expected.channel[0].display = 0;
  expected.channel[2].display = 1;
  expected.channel[2].coupling = 2;
  expected.channel[3].probe = 20;
  expected.channel[1].range = 0.4;
  expected.channel[1].offset = -0.125;
  expected.digitalDisplay[15] = 1;
  expected.digitalDisplay[3] = 1;
  expected.timebaseMode = 3;
  expected.timebaseRange = 2e-2;
  expected.timebaseDelay = 2.5e-6;
  expected.timebaseReference = 3;
  expected.triggerMode = 3;
  expected.triggerSource = 17;
  expected.triggerSlope = 2;
  expected.triggerLevel = 0.75;
  expected.triggerCoupling = 2;
  EXPECT_EQ(sim.scope->State(), expected);

  // Enumerated settings read back on every line (ScpiDialect); the numbers read back here.
  EXPECT_EQ(server.AnalogChannels().Range(Cvn73100_Channel_2), 0.4);
  EXPECT_EQ(server.AnalogChannels().Offset(Cvn73100_Channel_2), -0.125);
  EXPECT_EQ(server.Timebase().Delay(), 2.5e-6);
  EXPECT_EQ(server.Trigger().Level(), 0.75);
  EXPECT_EQ(server.Acquisition().Count(), Cvn73100_AcquisitionCount_64);
  EXPECT_EQ(server.AnalogChannels().ProbeAttenuation(Cvn73100_Channel_4), Cvn73100_ProbeAttenuation_X20);
  EXPECT_EQ(server.Utilities().QueryInstrumentError(), "");
}

TEST_F(ServerTest, ValuesOutsideTheEnumerationsAreRefusedBeforeSending) {
  const std::function<void()> refused[] = {
      [&] { server.Acquisition().SetType(static_cast<Cvn73100_AcquisitionType>(7)); },
      [&] { server.AnalogChannels().SetRange(static_cast<Cvn73100_AnalogChannels>(5), 1.0); },
      [&] { server.AnalogChannels().SetRange(Cvn73100_Channel_1, NAN); },
      [&] { server.Trace().SetDisplay(static_cast<Cvn73100_AllChannels>(7), Cvn73100_On); },
      [&] { server.Trigger().SetSource(static_cast<Cvn73100_TriggerSource>(26)); },
      [&] { server.LogicChannel().SetDisplay(static_cast<Cvn73100_LogicBits>(16), Cvn73100_On); },
  };
  for (const auto& action : refused) EXPECT_EQ(ServerCondition(action), SERVERERR_BAD_ARGUMENT);
  EXPECT_EQ(sim.scope->State(), sim::ScopeState{});
}

TEST_F(ServerTest, RunControlAndAutoScale) {
  server.StopTrigger();
  EXPECT_EQ(sim.scope->Running(), sim::RunState::Stop);
  server.Run();
  EXPECT_EQ(sim.scope->Running(), sim::RunState::Run);
  server.SingleTrigger();
  EXPECT_EQ(sim.scope->Running(), sim::RunState::Single);
  server.Run();
  server.Digitize();
  EXPECT_EQ(sim.scope->Running(), sim::RunState::Stop);
  server.AutoScale();
  EXPECT_DOUBLE_EQ(sim.scope->State().timebaseRange, 2.0 / sim::Waveform::kSineHz);
  EXPECT_DOUBLE_EQ(server.Measure().Frequency(Cvn73100_Channel_1), sim::Waveform::kSineHz);
  EXPECT_NEAR(server.Measure().VPP(Cvn73100_Channel_1), 2.0, 0.01);
  EXPECT_NEAR(server.Measure().VAverage(Cvn73100_Channel_2), 0.5, 0.01);
}

TEST_F(ServerTest, WaveformVoltsAndTimesFollowTheSignal) {
  const struct {
    Cvn73100_AnalogChannels channel;
    Cvn73100_WaveformPoints points;
    std::size_t expected;
  } cases[] = {{Cvn73100_Channel_1, Cvn73100_DataPoints_1000, 1000},
               {Cvn73100_Channel_3, Cvn73100_DataPoints_250, 250},
               {Cvn73100_Channel_2, Cvn73100_DataPoints_ALL, static_cast<std::size_t>(sim::kMaxRecordPoints)}};
  server.AnalogChannels().SetOffset(Cvn73100_Channel_3, 0.25);  // the offset must be undone by the preamble
  for (auto ch : {Cvn73100_Channel_2, Cvn73100_Channel_3}) server.AnalogChannels().SetDisplay(ch, Cvn73100_On);
  const double range = 1e-3;
  for (const auto& c : cases) {
    Variant time;
    Variant volts;
    server.GetWaveformData(c.channel, c.points, time, volts);
    const auto& t = time.AsDoubles();
    const auto& v = volts.AsDoubles();
    ASSERT_EQ(t.size(), c.expected);
    ASSERT_EQ(v.size(), c.expected);
    // Reference at the centre: the record spans -range/2 .. +range/2.
    EXPECT_NEAR(t.front(), -range / 2, 1e-12);
    EXPECT_NEAR(t[1] - t[0], range / static_cast<double>(c.expected), 1e-12);
    const double lsb = 8.0 / 65536;  // the default 8 V range in WORD codes
    for (std::size_t i = 0; i < t.size(); ++i) {
      ASSERT_NEAR(v[i], sim::Waveform::SignalVolts(c.channel, t[i]), lsb) << "channel " << c.channel << " point " << i;
    }
  }
}

TEST_F(ServerTest, AllWaveformDataHasOneTimeAndDataPairPerChannel) {
  Variant::Array all{Variant("stale")};
  EXPECT_EQ(ServerCondition([&] { server.GetAllWaveformData(Cvn73100_DataPoints_100, all); }), SERVERERR_UNSUPPORTED);
  for (auto ch : {Cvn73100_Channel_2, Cvn73100_Channel_3, Cvn73100_Channel_4}) {
    server.AnalogChannels().SetDisplay(ch, Cvn73100_On);
  }
  server.GetAllWaveformData(Cvn73100_DataPoints_100, all);
  ASSERT_EQ(all.size(), 4u);
  for (std::size_t ch = 0; ch < 4; ++ch) {
    const auto& pair = all[ch].AsArray();
    ASSERT_EQ(pair.size(), 2u);
    EXPECT_EQ(pair[0].AsDoubles().size(), 100u);
    EXPECT_NEAR(pair[1].AsDoubles()[10], sim::Waveform::SignalVolts(static_cast<int>(ch + 1), pair[0].AsDoubles()[10]),
                ch == 3 ? 0.001 : 8.0 / 65536);
  }
}

TEST_F(ServerTest, LogicDataIsTheCounterWord) {
  Variant time;
  Variant words;
  server.GetLogicData(Cvn73100_DataPoints_500, time, words);
  const auto& t = time.AsDoubles();
  const auto& w = words.AsArray();
  ASSERT_EQ(t.size(), 500u);
  ASSERT_EQ(w.size(), 500u);
  for (std::size_t i = 0; i < t.size(); ++i) ASSERT_EQ(w[i].AsLong(), sim::Waveform::LogicWord(t[i])) << i;
}

TEST_F(ServerTest, ScreenImagesDecodeInEveryFormatTheInstrumentSends) {
  const struct {
    Cvn73100_ImageFormat format;
    const char* mime;
  } cases[] = {{Cvn73100_ImageFormat_BMP, "image/bmp"},
               {Cvn73100_ImageFormat_GIF, "image/gif"},
               {Cvn73100_ImageFormat_TIF, "image/tiff"},
               {Cvn73100_ImageFormat_JPG, "image/jpeg"}};
  for (const auto& c : cases) {
    const Picture picture = server.GetScreenImage(c.format);
    EXPECT_EQ(picture.format, c.format);
    EXPECT_EQ(picture.mimeType, c.mime);
    EXPECT_EQ(picture.width, 640);
    EXPECT_EQ(picture.height, 480);
  }
  EXPECT_EQ(ServerCondition([&] { server.GetScreenImage(Cvn73100_ImageFormat_WMF); }), SERVERERR_BAD_ARGUMENT);
  EXPECT_EQ(ServerCondition([&] { server.GetScreenImage(Cvn73100_ImageFormat_EMF); }), SERVERERR_BAD_ARGUMENT);
}

TEST_F(ServerTest, SaveScreenImageWritesTheWholeFileOrNothing) {
  const test::TempDir temp("cvn-server");
  const fs::path& dir = temp.path();
  const fs::path file = temp.Make("screen.bmp", "previous");
  server.SaveScreenImage(file.string(), Cvn73100_ImageFormat_BMP);
  const std::string saved = test::ReadAll(file);
  EXPECT_EQ(Bytes(saved.begin(), saved.end()), server.GetScreenImage().data);

  const fs::path missing = dir / "no-such-dir" / "screen.bmp";
  EXPECT_EQ(ServerCondition([&] { server.SaveScreenImage(missing.string()); }), SERVERERR_FILE);
  // A refused format leaves the earlier file as it was.
  EXPECT_EQ(ServerCondition([&] { server.SaveScreenImage(file.string(), Cvn73100_ImageFormat_WMF); }),
            SERVERERR_BAD_ARGUMENT);
  EXPECT_EQ(fs::file_size(file), saved.size());
  EXPECT_EQ(std::distance(fs::directory_iterator(dir), fs::directory_iterator()), 1);
}

TEST_F(ServerTest, QueryInstrumentErrorReportsABadCommandOnce) {
  EXPECT_EQ(server.Utilities().QueryInstrumentError(), "");
  server.Output(Variant(":BOGus:COMMand 1"));
  EXPECT_EQ(server.Utilities().QueryInstrumentError().rfind("-113,", 0), 0u);
  EXPECT_EQ(server.Utilities().QueryInstrumentError(), "");
}

TEST_F(ServerTest, RawOutputEnterAndBytes) {
  server.Output(Variant("*IDN?"));
  Variant reply;
  server.Enter(reply, Variant("K"));
  EXPECT_EQ(reply.AsString(), "Corvane Technologies,73135D,QX40001234,A.02.10");

  server.Output(Variant(":SYSTem:SETup?"));
  server.Enter(reply, Variant("B"));
  EXPECT_EQ(ToLearnString(reply), server.Utilities().ReadStateData());

  const std::string idn = "*IDN?\n";
  Bytes out(idn.begin(), idn.end());
  server.WriteBytes(static_cast<std::int32_t>(out.size()), out);
  std::int32_t count = 20;
  Bytes in;
  server.ReadBytes(count, in);
  EXPECT_EQ(count, 20);
  EXPECT_EQ(std::string(in.begin(), in.end()), "Corvane Technologies");

  EXPECT_EQ(ServerCondition([&] { server.WriteBytes(7, out); }), SERVERERR_BAD_ARGUMENT);
  std::int32_t negative = -1;
  EXPECT_EQ(ServerCondition([&] { server.ReadBytes(negative, in); }), SERVERERR_BAD_ARGUMENT);
}

TEST_F(ServerTest, ABlockCutShortIsAnErrorAndTheChannelRecovers) {
  server.Utilities().IOChannel()->SetTimeout(300);
  sim.scope->SetFaults(sim::Faults{.dropMidBlock = true});
  EXPECT_EQ(ServerCondition([&] { server.Utilities().ReadStateData(); }), SERVERERR_BLOCK_SHORT);
  sim.scope->SetFaults(sim::Faults{});
  EXPECT_EQ(server.Utilities().Model(), "73135D");
  EXPECT_TRUE(server.Utilities().ReadStateData().has_value());
}

TEST(ServerAddresses, SerialKeywordsSetTheLine) {
  test::SimulatedScope sim;
  Cvn73100Server server(sim.manager);
  server.OpenConnection("com1::Baud=19200, Handshake=DTR_DSR,Parity=NONE");
  ISerialIO* serial = server.Utilities().IOChannel()->Serial();
  ASSERT_NE(serial, nullptr);
  EXPECT_EQ(serial->BaudRate(), 19200);
  EXPECT_EQ(serial->Handshake(), RS232_HandShake_DTR_DSR);
  EXPECT_EQ(serial->DataBits(), 8);
  EXPECT_EQ(serial->StopBits(), 1);
  EXPECT_EQ(server.Utilities().Model(), "73135D");

  server.OpenConnection("COM1");
  EXPECT_EQ(server.Utilities().IOChannel()->Serial()->BaudRate(), 9600);
  EXPECT_EQ(server.Utilities().IOChannel()->Serial()->Handshake(), RS232_HandShake_XON_XOFF);
}

TEST(ServerAddresses, UnknownFormsAreRefused) {
  test::SimulatedScope sim;
  Cvn73100Server server(sim.manager);
  for (const char* address : {"TCPIP0::1.2.3.4::INSTR", "COM", "COMX", "COM1::Baud=fast", "COM1::Baud=-9600",
                              "COM1::Handshake=RTS", "COM1::Flow=ON", "COM1::Baud"}) {
    EXPECT_EQ(ServerCondition([&] { server.OpenConnection(address); }), SERVERERR_BAD_ADDRESS) << address;
    EXPECT_EQ(server.ConnectionName(), "");
  }
  EXPECT_EQ(ServerCondition([&] { server.OpenConnection("GPIB3::7::INSTR"); }), IOERR_OPEN_FAILED);
}

TEST(ServerFaults, ALyingSetupHeaderIsRefusedBeforeAnyAllocation) {
  auto io = std::make_shared<test::ScriptedIO>("#9999999999\n");
  Cvn73100Server server(std::make_shared<test::ScriptedManager>(io));
  server.OpenConnection("GPIB0::7::INSTR");
  EXPECT_EQ(ServerCondition([&] { server.Utilities().ReadStateData(); }), SERVERERR_BLOCK_TOO_LARGE);
  EXPECT_LE(io->largestRead, 9);
  EXPECT_EQ(io->clears, 1);  // the rest of the reply is dropped
}

TEST(ServerRegistration, ComponentsCreateThisServer) {
  RegisterAutomationServer();
  test::SimulatedScope sim;
  auto server = Components::CreateServer(sim.manager);
  server->OpenConnection("GPIB0::7::INSTR");
  EXPECT_EQ(server->Utilities().Model(), "73135D");
}

}  // namespace
}  // namespace cvn73100::server
