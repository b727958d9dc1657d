// Faults of the line, injected under the I/O library and the automation server: the serial device that
// vanishes during a transfer, and the reply that comes after its query gave up.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "iolib/BoardMap.h"
#include "iolib/IOManager.h"
#include "server/Cvn73100Server.h"
#include "simulator/Instrument.h"
#include "simulator/InstrumentPort.h"
#include "simulator/PtyServer.h"
#include "tests/hardening/Hardening.h"

namespace cvn73100::hardening {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr const char* kSerialAddress = "COM1::Baud=9600,Handshake=DTR_DSR";
constexpr const char* kManufacturer = "Corvane Technologies";

double MsSince(Clock::time_point start, Clock::time_point end = Clock::now()) {
  return std::chrono::duration<double, std::milli>(end - start).count();
}

// The I/O library's condition of what `call` raises; 0 when it returns or raises something else.
std::int32_t IOConditionOf(const std::function<void()>& call) { return IOErrorCondition(test::ErrorOf(call)); }

// An instrument on a pseudo-terminal, reached as COM1 through a symbolic link, the way a USB adapter's
// /dev/serial/by-id name leads to whatever node the kernel gave it: unplugging takes the node away, plugging
// in again makes a new node behind the same name.
class Bench {
 public:
  Bench() : m_link(m_dir.path() / "ttyCVN") {
    Plug(sim::Faults{});
    io::BoardMap map = io::BoardMap::EmbeddedDefault();
    map.SetCom(1, io::BoardMap::ComTarget{io::BoardMap::ComKind::Node, m_link.string(), "test"});
    manager = std::make_shared<io::IOManager>(map);
  }
  ~Bench() { Unplug(); }

  // A new instrument on a new pseudo-terminal behind the link.
  void Plug(const sim::Faults& faults) {
    Unplug();
    serialInstrument = std::make_unique<sim::Instrument>();
    serialInstrument->SetFaults(faults);
    m_port = std::make_unique<sim::InstrumentPort>(*serialInstrument, sim::InstrumentPort::Line::Serial);
    m_pty = std::make_unique<sim::PtyServer>(*m_port);
    const fs::path fresh = m_link.string() + ".new";
    fs::remove(fresh);
    fs::create_symlink(m_pty->DevicePath(), fresh);
    fs::rename(fresh, m_link);
  }
  // The pseudo-terminal goes away, as a USB adapter does when pulled out. Thread-safe against a reader.
  void Unplug() {
    m_pty.reset();
    m_port.reset();
    serialInstrument.reset();
  }

  std::shared_ptr<io::IOManager> manager;
  std::unique_ptr<sim::Instrument> serialInstrument;

 private:
  TempDir m_dir;
  fs::path m_link;
  std::unique_ptr<sim::InstrumentPort> m_port;
  std::unique_ptr<sim::PtyServer> m_pty;
};

// --- The device vanishes mid-transfer. ---

constexpr std::int32_t kVanishTimeoutMs = 1000;
constexpr auto kVanishAfter = milliseconds(300);

struct VanishCase {
  const char* name;
  // Starts a transfer of a screen image that takes minutes at the paced line rate.
  std::function<void(server::Cvn73100Server&)> transfer;
};

void PrintTo(const VanishCase& c, std::ostream* os) { *os << c.name; }

class DeviceVanishes : public ::testing::TestWithParam<VanishCase> {};

TEST_P(DeviceVanishes, DistinctErrorAtOnceNoSpinAndThePortOpensAgain) {
  sim::Faults paced;
  paced.lineBaud = 9600;
  Bench bench;
  bench.Plug(paced);
  const int descriptorsBefore = OpenDescriptorCount();

  server::Cvn73100Server server(bench.manager);
  server.OpenConnection(kSerialAddress);
  server.Utilities().IOChannel()->SetTimeout(kVanishTimeoutMs);

  Clock::time_point vanishedAt;
  std::thread unplug([&] {
    std::this_thread::sleep_for(kVanishAfter);
    vanishedAt = Clock::now();
    bench.Unplug();
  });
  const auto start = Clock::now();
  std::int32_t condition = 0;
  std::string description;
  try {
    GetParam().transfer(server);
  } catch (const ScopeError& e) {
    condition = IOErrorCondition(e);
    description = e.Description();
  }
  const auto failedAt = Clock::now();
  unplug.join();

  // Told apart from a timeout, and no later than the call's deadline allows.
  EXPECT_EQ(condition, IOERR_DEVICE_VANISHED) << description;
  EXPECT_LE(MsSince(start, failedAt), kVanishTimeoutMs + 100.0);
  RecordProperty("ms_from_vanish_to_error", static_cast<int>(MsSince(vanishedAt, failedAt)));

  // Nothing keeps polling the dead node.
  const double cpuBefore = ProcessCpuMs();
  std::this_thread::sleep_for(milliseconds(500));
  EXPECT_LT(ProcessCpuMs() - cpuBefore, 50.0) << "CPU milliseconds used over 500 ms after the error";

  // The next call on the dead connection fails at once too, rather than waiting out its timeout.
  const auto again = Clock::now();
  EXPECT_NE(IOConditionOf([&] {
              server.Output(Variant("*IDN?"));
              Variant reply;
              server.Enter(reply, Variant("K"));
            }),
            0);
  EXPECT_LT(MsSince(again), kVanishTimeoutMs / 2.0);

  // The same port name opens again once a device is back behind it, and nothing of the old one is held.
  bench.Plug(sim::Faults{});
  server.OpenConnection(kSerialAddress);
  EXPECT_EQ(server.Utilities().Manufacturer(), kManufacturer);
  server.CloseConnection();
  EXPECT_EQ(OpenDescriptorCount(), descriptorsBefore);
}

INSTANTIATE_TEST_SUITE_P(Hardening, DeviceVanishes,
                         ::testing::Values(VanishCase{"BlockReadThroughTheServer",
                                                      [](server::Cvn73100Server& server) {
                                                        server.GetScreenImage(Cvn73100_ImageFormat_BMP);
                                                      }},
                                           VanishCase{"RawReadThroughTheServer",
                                                      [](server::Cvn73100Server& server) {
                                                        server.Output(Variant(":DISPlay:DATA? BMP"));
                                                        std::int32_t count = 500000;
                                                        Bytes bytes;
                                                        server.ReadBytes(count, bytes);
                                                      }}),
                         [](const ::testing::TestParamInfo<VanishCase>& param) {
                           return std::string(param.param.name);
                         });

// --- A late reply. ---

constexpr int kLateMs = 400;
constexpr std::int32_t kShortTimeoutMs = 150;

struct LateCase {
  const char* name;
  // Whether the late reply has reached the host before the next query goes out, or is still on its way.
  bool staleArrivedFirst;
  // The query whose reply comes too late: an identity, or a "1" that looks like the answer to "*OPC?".
  const char* lateQuery = "*IDN?";
};

void PrintTo(const LateCase& c, std::ostream* os) { *os << c.name; }

class LateReply : public ::testing::TestWithParam<LateCase> {};

TEST_P(LateReply, TheNextQueryGetsItsOwnAnswer) {
  const LateCase& c = GetParam();
  Bench bench;
  sim::Faults late;
  late.lateReplyMs = kLateMs;
  bench.Plug(late);
  server::Cvn73100Server server(bench.manager);
  server.OpenConnection(kSerialAddress);
  auto channel = server.Utilities().IOChannel();

  channel->SetTimeout(kShortTimeoutMs);
  server.Output(Variant(c.lateQuery));
  Variant reply;
  try {
    server.Enter(reply, Variant("K"));
    FAIL() << "the late reply came in time: " << reply.AsString();
  } catch (const ScopeError& e) {
    EXPECT_EQ(IOErrorCondition(e), IOERR_TIMEOUT) << e.Description();
  }
  if (c.staleArrivedFirst) std::this_thread::sleep_for(milliseconds(kLateMs + 300));

  channel->SetTimeout(kLateMs + 2000);
  server.Output(Variant(":TIMebase:RANGe?"));
  server.Enter(reply, Variant("K"));
  EXPECT_EQ(reply.AsString().find(kManufacturer), std::string::npos) << "the stale *IDN? reply was taken";
  EXPECT_NO_THROW(EXPECT_DOUBLE_EQ(server::ScpiChannel::ParseReal(reply.AsString()), 1e-3)) << reply.AsString();

  // And the one after that too: nothing of the first exchange is left over.
  server.Output(Variant(":CHANnel1:RANGe?"));
  server.Enter(reply, Variant("K"));
  EXPECT_NO_THROW(EXPECT_DOUBLE_EQ(server::ScpiChannel::ParseReal(reply.AsString()), 8.0)) << reply.AsString();
}

INSTANTIATE_TEST_SUITE_P(Hardening, LateReply,
                         // A message bus drops the late reply itself (the I/O library's backend tests); a serial line
                         // keeps it, and the server must get back in step.
                         ::testing::Values(LateCase{"SerialStaleArrivedFirst", true},
                                           LateCase{"SerialStaleStillOnItsWay", false},
                                           LateCase{"SerialStaleOneStillOnItsWay", false, "*OPC?"}),
                         [](const ::testing::TestParamInfo<LateCase>& param) { return std::string(param.param.name); });

TEST(LateReply, ASerialInstrumentThatStaysSilentIsNotTakenToBeInStep) {
  Bench bench;
  server::Cvn73100Server server(bench.manager);
  server.OpenConnection(kSerialAddress);
  server.Utilities().IOChannel()->SetTimeout(kShortTimeoutMs);
  sim::Faults silent;
  silent.silent = true;
  bench.serialInstrument->SetFaults(silent);
  Variant reply;
  server.Output(Variant("*IDN?"));
  EXPECT_EQ(IOConditionOf([&] { server.Enter(reply, Variant("K")); }), IOERR_TIMEOUT);

  // The next message first needs the instrument to confirm that nothing more is coming; it cannot.
  try {
    server.Output(Variant(":TIMebase:RANGe?"));
    ADD_FAILURE() << "a silent instrument was taken to be in step";
  } catch (const ScopeError& e) {
    EXPECT_EQ(IOErrorCondition(e), IOERR_TIMEOUT);
    EXPECT_NE(e.Description().find("*OPC?"), std::string::npos) << e.Description();
  }

  // Once it talks again, the channel comes back in step by itself.
  bench.serialInstrument->SetFaults(sim::Faults{});
  server.Output(Variant(":TIMebase:RANGe?"));
  server.Enter(reply, Variant("K"));
  EXPECT_DOUBLE_EQ(server::ScpiChannel::ParseReal(reply.AsString()), 1e-3) << reply.AsString();
}

}  // namespace
}  // namespace cvn73100::hardening
