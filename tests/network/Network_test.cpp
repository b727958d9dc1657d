// Instruments on the network: our VXI-11 client and gateway against each other and against PyVISA-py, and the
// serial line through ser2net (RFC 2217 and raw TCP), end to end through the automation server; and servers that
// misbehave, each of which must end in a clear error in bounded time.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "iolib/BoardMap.h"
#include "iolib/IOManager.h"
#include "iolib/Rfc2217Line.h"
#include "iolib/SerialIO.h"
#include "iolib/TcpSerialLine.h"
#include "iolib/Vxi11IO.h"
#include "server/Cvn73100Server.h"
#include "simulator/Instrument.h"
#include "simulator/InstrumentPort.h"
#include "simulator/PtyServer.h"
#include "simulator/Vxi11Gateway.h"
#include "tests/network/NetworkPeers.h"
#include "tests/support/TempDir.h"

namespace cvn73100::network {
namespace {

using Clock = std::chrono::steady_clock;

std::int32_t IOConditionOf(const std::function<void()>& call) { return IOErrorCondition(test::ErrorOf(call)); }

std::shared_ptr<io::IOManager> Manager(const std::string& config) {
  return std::make_shared<io::IOManager>(io::BoardMap::FromText(config));
}

// What the control does with an instrument: the identification test, a waveform, a setup round trip.
void RunControl(const std::shared_ptr<io::IOManager>& manager, const std::string& address) {
  server::Cvn73100Server server(manager);
  server.OpenConnection(address);
  EXPECT_TRUE(server.Utilities().CheckInstrumentID());
  Variant time, volts;
  server.GetWaveformData(Cvn73100_Channel_1, Cvn73100_DataPoints_1000, time, volts);
  EXPECT_EQ(volts.AsDoubles().size(), 1000u);
  const LearnString original = server.Utilities().ReadStateData();
  server.Timebase().SetRange(2e-3);
  ASSERT_NE(server.Utilities().ReadStateData(), original);
  server.Utilities().WriteStateData(original);
  EXPECT_EQ(server.Utilities().ReadStateData(), original);
  EXPECT_EQ(server.Utilities().QueryInstrumentError(), "");
}

// A gateway in this process with instruments at 7 (answers) and 8 (silent).
class Gateway {
 public:
  explicit Gateway(bool registerWithPortmapper) {
    sim::Faults silent;
    silent.silent = true;
    m_silent.SetFaults(silent);
    std::array<sim::Instrument*, 31> behind{};
    behind[7] = &m_instrument;
    behind[8] = &m_silent;
    gateway = std::make_unique<sim::Vxi11Gateway>(behind, 0, registerWithPortmapper);
  }
  std::string Config() const { return "GPIB1 = vxi11:127.0.0.1:" + std::to_string(gateway->Port()) + "\n"; }

  std::unique_ptr<sim::Vxi11Gateway> gateway;

 private:
  sim::Instrument m_instrument;
  sim::Instrument m_silent;
};

TEST(Vxi11, SearchAndControlThroughOurClientAndGateway) {
  Gateway gateway(false);
  const auto manager = Manager(gateway.Config());
  EXPECT_EQ(manager->FindResources("GPIB1"),
            (std::vector<std::string>{"GPIB1::INTFC", "GPIB1::7::INSTR", "GPIB1::8::INSTR"}));
  RunControl(manager, "GPIB1::7::INSTR");
}

TEST(Vxi11, GatewayFaultsEndInNamedErrorsWithinTheTimeout) {
  constexpr std::int32_t kTimeoutMs = 1500;
  Gateway gateway(false);
  const auto manager = Manager(gateway.Config());
  const struct {
    const char* name;
    std::string address;
    std::int32_t condition;
    bool waitsOutTimeout;
  } cases[] = {{"no such device", "GPIB1::5::INSTR", IOERR_NO_LISTENER, false},
               {"silent device", "GPIB1::8::INSTR", IOERR_TIMEOUT, true}};
  for (const auto& c : cases) {
    const auto start = Clock::now();
    EXPECT_EQ(IOConditionOf([&] {
                auto io = manager->Open(c.address);
                io->SetTimeout(kTimeoutMs);
                std::string reply;
                io->Output("*IDN?");
                io->Enter(reply);
              }),
              c.condition)
        << c.name;
    const auto spent = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
    EXPECT_LT(spent, c.waitsOutTimeout ? 2 * kTimeoutMs : kTimeoutMs / 2) << c.name;
  }
  // Nobody at the port: the open fails.
  EXPECT_EQ(IOConditionOf([&] { Manager("GPIB1 = vxi11:127.0.0.1:" + std::to_string(FreePort()))->Open("GPIB1::7"); }),
            IOERR_OPEN_FAILED);
}

TEST(Vxi11, LinkLostWhenTheGatewayGoes) {
  const std::string program = CVN_SIM_PROGRAM;
  const int port = FreePort();
  auto simulator =
      std::make_unique<ChildProcess>(std::vector<std::string>{program, "--vxi11", "127.0.0.1:" + std::to_string(port)});
  ASSERT_TRUE(WaitUntil([port] { return Listening(port); }, std::chrono::seconds(5)));
  auto io = Manager("GPIB1 = vxi11:127.0.0.1:" + std::to_string(port))->Open("GPIB1::7::INSTR");
  io->Output("*IDN?");
  std::string reply;
  io->Enter(reply);
  ASSERT_NE(reply, "");
  simulator.reset();
  EXPECT_EQ(IOConditionOf([&] { io->Output("*IDN?"); }), IOERR_DEVICE_VANISHED);
}

// PyVISA-py, a client we did not write, against our gateway through the host's portmapper; then our client the
// same way.
TEST(Vxi11, PyVisaAgreesWithOurGateway) {
  Portmapper portmapper;
  if (!portmapper.Available()) GTEST_SKIP() << "no portmapper on port 111 and rpcbind cannot be started";
  Gateway gateway(true);
  ASSERT_TRUE(gateway.gateway->Registered());
  const std::string script = R"(
import pyvisa, sys
rm = pyvisa.ResourceManager('@py')
i = rm.open_resource('TCPIP0::127.0.0.1::gpib0,7::INSTR')
i.timeout = 3000
i.read_termination = '\n'
assert i.query('*IDN?').startswith('Corvane Technologies,'), 'idn'
i.clear()
assert i.read_stb() == 0, 'stb'
i.write(':WAVeform:POINts 1000;:WAVeform:FORMat BYTE')
i.write(':WAVeform:DATA?')
block = i.read_raw()
assert block.startswith(b'#41000') and len(block) == 1000 + 6 + 1, len(block)
assert i.query(':SYSTem:ERRor?').startswith('0,'), 'error queue'
i.close()
try:
    rm.open_resource('TCPIP0::127.0.0.1::gpib0,5::INSTR')
    sys.exit('opened an address without a device')
except Exception as e:
    assert '3' in str(e), str(e)
)";
  EXPECT_EQ(std::system(("/usr/bin/python3 -c \"" + script + "\"").c_str()), 0);
  auto io = Manager("GPIB1 = vxi11:127.0.0.1")->Open("GPIB1::7::INSTR");
  io->Output("*IDN?");
  std::string reply;
  io->Enter(reply);
  EXPECT_EQ(reply.rfind("Corvane Technologies,", 0), 0u) << reply;
}

// --- Serial device servers ---

// A simulated RS-232 instrument on a pseudo-terminal, served by ser2net.
class SerialServer : public ::testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    if (!Ser2net::Installed()) GTEST_SKIP() << "ser2net is not installed";
    m_port = std::make_unique<sim::InstrumentPort>(m_instrument, sim::InstrumentPort::Line::Serial);
    m_pty = std::make_unique<sim::PtyServer>(*m_port);
    m_server = std::make_unique<Ser2net>(m_pty->DevicePath(), m_directory.path().string());
    ASSERT_TRUE(m_server->ready);
  }
  int Port(const std::string& kind) const { return kind == "rfc2217" ? m_server->rfc2217Port : m_server->rawPort; }

  test::TempDir m_directory{"cvnnet"};
  sim::Instrument m_instrument;
  std::unique_ptr<sim::InstrumentPort> m_port;
  std::unique_ptr<sim::PtyServer> m_pty;
  std::unique_ptr<Ser2net> m_server;
};

TEST_P(SerialServer, ControlRunsThroughTheServer) {
  const std::string kind = GetParam();
  const auto manager = Manager("COM2 = " + kind + ":127.0.0.1:" + std::to_string(Port(kind)) + "\n");
  EXPECT_EQ(manager->FindResources("COM2"), std::vector<std::string>{"COM2"});
  RunControl(manager, "COM2::Baud=9600,Handshake=DTR_DSR");
}

INSTANTIATE_TEST_SUITE_P(Ser2net, SerialServer, ::testing::Values("rfc2217", "tcp"));

// Every byte value crosses the Telnet link both ways: 255 doubled on the wire, single at both ends.
TEST(SerialServerBytes, EveryByteValuePassesRfc2217BothWays) {
  if (!Ser2net::Installed()) GTEST_SKIP() << "ser2net is not installed";
  const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_GE(master, 0);
  ::grantpt(master);
  ::unlockpt(master);
  const test::TempDir directory("cvnnet");
  Ser2net server(::ptsname(master), directory.path().string());
  ASSERT_TRUE(server.ready);
  io::Rfc2217Line line("127.0.0.1", server.rfc2217Port);
  std::vector<std::uint8_t> all(256);
  for (int i = 0; i < 256; ++i) all[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(i);

  const auto receive = [](const std::function<std::size_t(std::uint8_t*, std::size_t)>& read) {
    std::vector<std::uint8_t> got(256);
    std::size_t done = 0;
    for (int tries = 0; done < got.size() && tries < 100; ++tries) done += read(got.data() + done, got.size() - done);
    got.resize(done);
    return got;
  };
  line.Write(all.data(), all.size(), io::Deadline(std::chrono::seconds(2)));
  EXPECT_EQ(receive([&](std::uint8_t* b, std::size_t n) {
              pollfd p{master, POLLIN, 0};
              return ::poll(&p, 1, 100) > 0 ? static_cast<std::size_t>(std::max<ssize_t>(0, ::read(master, b, n))) : 0;
            }),
            all);
  ASSERT_EQ(::write(master, all.data(), all.size()), 256);
  EXPECT_EQ(receive([&](std::uint8_t* b, std::size_t n) {
              return line.Read(b, n, io::Deadline(std::chrono::milliseconds(100)));
            }),
            all);
  line.Close();
  ::close(master);
}

// A one-connection TCP server that plays `behaviour` on the accepted socket, then closes it.
class FakeServer {
 public:
  explicit FakeServer(std::function<void(int)> behaviour) {
    m_listen = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    ::bind(m_listen, reinterpret_cast<sockaddr*>(&address), sizeof address);
    ::listen(m_listen, 1);
    ::getsockname(m_listen, reinterpret_cast<sockaddr*>(&address), &length);
    port = ntohs(address.sin_port);
    m_thread = std::thread([this, behaviour] {
      const int fd = ::accept(m_listen, nullptr, nullptr);
      if (fd >= 0) behaviour(fd);
      ::close(fd);
    });
  }
  ~FakeServer() {
    ::shutdown(m_listen, SHUT_RDWR);
    m_thread.join();
    ::close(m_listen);
  }
  int port = 0;

 private:
  int m_listen = -1;
  std::thread m_thread;
};

// Reads what the client sends for `span`, answering `answer` once.
std::function<void(int)> Answering(std::vector<std::uint8_t> answer, std::chrono::milliseconds span) {
  return [answer, span](int fd) {
    ::send(fd, answer.data(), answer.size(), MSG_NOSIGNAL);
    const auto end = Clock::now() + span;
    std::uint8_t sink[256];
    while (Clock::now() < end) {
      pollfd p{fd, POLLIN, 0};
      if (::poll(&p, 1, 50) > 0 && ::recv(fd, sink, sizeof sink, 0) <= 0) return;
    }
  };
}

TEST(MisbehavingServers, EachEndsInAClearErrorInBoundedTime) {
  const struct {
    const char* name;
    std::function<void(int)> behaviour;
    std::function<void(int port)> use;
    std::int32_t condition;
    const char* says;
  } cases[] = {
      {"never answers the com port option", Answering({}, std::chrono::seconds(3)),
       [](int port) { io::Rfc2217Line("127.0.0.1", port); }, IOERR_OPEN_FAILED, "com port control option"},
      {"takes the option, never acknowledges the baud rate", Answering({255, 253, 44}, std::chrono::seconds(3)),
       [](int port) { io::Rfc2217Line("127.0.0.1", port); }, IOERR_OPEN_FAILED, "baud rate"},
      {"drops the connection mid-block",
       [](int fd) {
         std::this_thread::sleep_for(std::chrono::milliseconds(100));
         ::send(fd, "#42000abcdef", 12, MSG_NOSIGNAL);
       },
       [](int port) {
         io::SerialIO io("COM1", std::make_unique<io::TcpSerialLine>("127.0.0.1", port));
         io.SetTimeout(5000);
         io.WriteBytes(1, Bytes{'x'});
         Bytes block;
         io.ReadBytes(2006, block);
       },
       IOERR_DEVICE_VANISHED, "127.0.0.1:"},
  };
  for (const auto& c : cases) {
    FakeServer server(c.behaviour);
    const auto start = Clock::now();
    try {
      c.use(server.port);
      ADD_FAILURE() << c.name << ": no error";
    } catch (const ScopeError& e) {
      EXPECT_EQ(IOErrorCondition(e), c.condition) << c.name << ": " << e.Description();
      EXPECT_NE(e.Description().find(c.says), std::string::npos) << c.name << ": " << e.Description();
    }
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(2)) << c.name;
  }
}

}  // namespace
}  // namespace cvn73100::network
