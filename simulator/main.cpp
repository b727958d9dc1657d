// cvn73100-sim: serves simulated 73100 oscilloscopes on pseudo-terminals and loopback TCP until a signal.
#include <pthread.h>
#include <signal.h>

#include <array>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "simulator/Instrument.h"
#include "simulator/InstrumentPort.h"
#include "simulator/ProgramOptions.h"
#include "simulator/PrologixAdapter.h"
#include "simulator/PtyServer.h"
#include "simulator/TcpServer.h"
#include "simulator/Vxi11Gateway.h"

using namespace cvn73100::sim;

namespace {

std::string Describe(const InstrumentConfig& c) {
  return "GPIB address " + std::to_string(c.gpibAddress) + ", *IDN? \"" + c.identity.Reply() + "\"";
}

}  // namespace

int main(int argc, char** argv) {
  // Blocked before any thread starts, so that every thread leaves the signals to sigwait below. A shell starts
  // background jobs with SIGINT ignored, and an ignored signal never reaches sigwait: restore the default first.
  signal(SIGINT, SIG_DFL);
  signal(SIGTERM, SIG_DFL);
  sigset_t stopSignals;
  sigemptyset(&stopSignals);
  sigaddset(&stopSignals, SIGINT);
  sigaddset(&stopSignals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

  ProgramOptions options;
  try {
    options = ProgramOptions::Parse(std::vector<std::string>(argv + 1, argv + argc));
  } catch (const std::invalid_argument& e) {
    std::cerr << "cvn73100-sim: " << e.what() << "\nTry 'cvn73100-sim --help'.\n";
    return 2;
  }
  if (options.help) {
    std::cout << ProgramOptions::Help();
    return 0;
  }

  // Declared in this order so that the servers stop before the devices they serve go away. Each endpoint gets
  // instruments of its own, made from the same configuration: an instrument has one output queue, as a real one
  // has one connection.
  std::vector<std::unique_ptr<Instrument>> instruments;
  std::vector<std::unique_ptr<ByteDevice>> devices;
  std::vector<std::unique_ptr<PtyServer>> ptys;
  std::vector<std::unique_ptr<TcpServer>> sockets;
  std::unique_ptr<Vxi11Gateway> gateway;
  auto makeInstrument = [&](const InstrumentConfig& config) -> Instrument& {
    instruments.push_back(std::make_unique<Instrument>(config));
    return *instruments.back();
  };
  auto makeAdapter = [&](PrologixAdapter::Model model) -> ByteDevice& {
    auto adapter = std::make_unique<PrologixAdapter>(model);
    for (const InstrumentConfig& config : options.instruments)
      adapter->Attach(config.gpibAddress, makeInstrument(config));
    devices.push_back(std::move(adapter));
    return *devices.back();
  };
  try {
    if (options.pty) {
      for (const InstrumentConfig& config : options.instruments) {
        devices.push_back(std::make_unique<InstrumentPort>(makeInstrument(config), InstrumentPort::Line::Serial));
        ptys.push_back(std::make_unique<PtyServer>(*devices.back()));
        std::cout << ptys.back()->DevicePath() << std::endl;
        std::cerr << "pty " << ptys.back()->DevicePath() << ": RS-232 instrument, " << Describe(config) << "\n";
      }
    }
    if (options.tcpPort) {
      for (std::size_t i = 0; i < options.instruments.size(); ++i) {
        const InstrumentConfig& config = options.instruments[i];
        const auto port = static_cast<std::uint16_t>(*options.tcpPort == 0 ? 0 : *options.tcpPort + i);
        devices.push_back(std::make_unique<InstrumentPort>(makeInstrument(config), InstrumentPort::Line::Socket));
        sockets.push_back(std::make_unique<TcpServer>(*devices.back(), port));
        std::cout << "127.0.0.1:" << sockets.back()->Port() << std::endl;
        std::cerr << "tcp 127.0.0.1:" << sockets.back()->Port() << ": raw SCPI socket, " << Describe(config) << "\n";
      }
    }
    if (options.prologixTcpPort) {
      sockets.push_back(
          std::make_unique<TcpServer>(makeAdapter(PrologixAdapter::Model::Ethernet), *options.prologixTcpPort));
      std::cout << "127.0.0.1:" << sockets.back()->Port() << std::endl;
      std::cerr << "prologix-tcp 127.0.0.1:" << sockets.back()->Port() << ": GPIB-ETHERNET adapter\n";
    }
    if (options.prologixPty) {
      ptys.push_back(std::make_unique<PtyServer>(makeAdapter(PrologixAdapter::Model::Usb)));
      std::cout << ptys.back()->DevicePath() << std::endl;
      std::cerr << "prologix-pty " << ptys.back()->DevicePath() << ": GPIB-USB adapter\n";
    }
    if (options.prologixTcpPort || options.prologixPty) {
      for (const InstrumentConfig& config : options.instruments)
        std::cerr << "  behind the adapter: " << Describe(config) << "\n";
    }
    if (options.vxi11Port) {
      std::array<Instrument*, 31> behind{};
      for (const InstrumentConfig& config : options.instruments)
        behind[static_cast<std::size_t>(config.gpibAddress)] = &makeInstrument(config);
      gateway = std::make_unique<Vxi11Gateway>(behind, *options.vxi11Port, true);
      std::cout << "127.0.0.1:" << gateway->Port() << std::endl;
      std::cerr << "vxi11 127.0.0.1:" << gateway->Port() << ": VXI-11 gateway, interface "
                << Vxi11Gateway::kInterfaceName
                << (gateway->Registered() ? ", registered with the portmapper\n"
                                          : ", NOT registered (no portmapper): give clients the port\n");
      for (const InstrumentConfig& config : options.instruments)
        std::cerr << "  behind the gateway: " << Describe(config) << "\n";
    }
  } catch (const std::system_error& e) {
    std::cerr << "cvn73100-sim: " << e.what() << "\n";
    return 1;
  }

  int received = 0;
  sigwait(&stopSignals, &received);
  std::cerr << "cvn73100-sim: stopping\n";
  return 0;
}
