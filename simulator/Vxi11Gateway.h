#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <thread>

#include "simulator/Instrument.h"

struct __rpc_svcxprt;  // NOLINT(bugprone-reserved-identifier): the RPC library's own name

namespace cvn73100::sim {

// A VXI-11 LAN/GPIB gateway on a TCP port of 127.0.0.1 with instruments at GPIB addresses of its interface
// "gpib0": links to "gpib0,N" reach the instrument at address N (an address with none is "device not accessible"),
// a link to "gpib0" itself is the interface. The core channel is registered with the host's portmapper when one
// runs; the abort channel shares its port. Calls are served one at a time, as the bus they share would serve them.
// The RPC library keeps its servers in process-wide tables, so a process runs one gateway at a time.
class Vxi11Gateway {
 public:
  static constexpr const char* kInterfaceName = "gpib0";
  // Most bytes one device_write may carry and one device_read returns.
  static constexpr std::uint32_t kMaxBlock = 1u << 20;

  // Serves `instruments` (index: GPIB address; null where there is none; each must outlive the gateway) on `port`
  // (0: any free port). Throws std::system_error when the port cannot be bound, std::logic_error when this
  // process runs a gateway already.
  Vxi11Gateway(const std::array<Instrument*, 31>& instruments, std::uint16_t port, bool registerWithPortmapper);
  ~Vxi11Gateway();
  Vxi11Gateway(const Vxi11Gateway&) = delete;
  Vxi11Gateway& operator=(const Vxi11Gateway&) = delete;

  std::uint16_t Port() const { return port_; }
  // Whether the host's portmapper knows the core channel.
  bool Registered() const { return registered_; }

  // The gateway's side of each core procedure; the gateway of the process answers them (see the .cpp).
  struct Link {
    int address = -1;         // -1: the interface
    std::string pending;      // bytes read from the instrument beyond what the host asked for
    bool pendingEnd = false;  // the last pending byte ended a message
  };
  long CreateLink(const std::string& device, long& lid);
  long Write(long lid, const std::uint8_t* data, std::size_t size, bool end);
  // Reads up to `requestSize` bytes (at most kMaxBlock) into `data`; `count` tells how many.
  long Read(long lid, std::size_t requestSize, std::uint32_t timeoutMs, int termChar, char* data, std::size_t& count,
            long& reason);
  long ReadStatusByte(long lid, std::uint8_t& stb);
  long Clear(long lid);
  long Lock(long lid);
  long Unlock(long lid);
  long KnownLink(long lid);
  long DestroyLink(long lid);

 private:
  void Serve();
  Instrument* InstrumentOf(long lid, long& error);

  std::array<Instrument*, 31> instruments_{};
  std::map<long, Link> links_;
  long nextLid_ = 1;
  long lockHolder_ = 0;
  int listen_ = -1;
  __rpc_svcxprt* transport_ = nullptr;
  int wake_[2] = {-1, -1};
  std::uint16_t port_ = 0;
  bool registered_ = false;
  std::thread server_;
};

}  // namespace cvn73100::sim
