#include "simulator/Vxi11Gateway.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "vxi11.h"

// After the generated header, which brings the RPC types the portmapper header needs.
#include <rpc/pmap_clnt.h>

// The dispatchers rpcgen writes for the core and abort channels.
extern "C" void device_core_1(svc_req* request, SVCXPRT* transport);
extern "C" void device_async_1(svc_req* request, SVCXPRT* transport);

namespace cvn73100::sim {
namespace {

// VXI-11 error codes and flags the gateway uses.
constexpr long kOk = 0, kNotAccessible = 3, kInvalidLink = 4, kChannelNotEstablished = 6, kUnsupported = 8,
               kLocked = 11, kNoLock = 12, kTimeout = 15, kInvalidAddress = 21;
// The RPC library's largest record buffers: fewer system calls per block.
constexpr unsigned kRpcBuffer = 256u << 10;
constexpr long kFlagEnd = 0x08, kFlagTermChar = 0x80;
constexpr long kReasonCount = 0x01, kReasonChar = 0x02, kReasonEnd = 0x04;

// The gateway of this process. Its server thread is the only one touching the RPC library's tables while it runs.
std::atomic<Vxi11Gateway*> g_gateway{nullptr};

Vxi11Gateway& Gateway() { return *g_gateway.load(); }

// "gpib0,7" -> 7; -1 for "gpib0"; -2 for anything else.
int ParseDevice(const std::string& device) {
  const std::string prefix = Vxi11Gateway::kInterfaceName;
  if (device == prefix) return -1;
  if (device.size() <= prefix.size() + 1 || device.compare(0, prefix.size(), prefix) != 0 ||
      device[prefix.size()] != ',')
    return -2;
  int address = -1;
  const char* first = device.data() + prefix.size() + 1;
  const char* last = device.data() + device.size();
  const auto [end, ec] = std::from_chars(first, last, address);
  if (ec != std::errc() || end != last || address < 0 || address > 30) return -2;
  return address;
}

}  // namespace

Vxi11Gateway::Vxi11Gateway(const std::array<Instrument*, 31>& instruments, std::uint16_t port,
                           bool registerWithPortmapper)
    : instruments_(instruments) {
  Vxi11Gateway* none = nullptr;
  if (!g_gateway.compare_exchange_strong(none, this)) throw std::logic_error("a VXI-11 gateway runs already");
  listen_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int yes = 1;
  setsockopt(listen_, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  setsockopt(listen_, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);  // inherited by the connections: replies are awaited
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);  // loopback only, never another interface
  socklen_t length = sizeof address;
  if (listen_ < 0 || bind(listen_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      listen(listen_, 8) != 0 || getsockname(listen_, reinterpret_cast<sockaddr*>(&address), &length) != 0 ||
      pipe2(wake_, O_CLOEXEC | O_NONBLOCK) != 0) {
    const int error = errno;
    if (listen_ >= 0) close(listen_);
    g_gateway = nullptr;
    throw std::system_error(error, std::generic_category(), "127.0.0.1:" + std::to_string(port));
  }
  port_ = ntohs(address.sin_port);
  transport_ = svc_vc_create(listen_, kRpcBuffer, kRpcBuffer);
  if (transport_ == nullptr) {
    close(listen_);
    g_gateway = nullptr;
    throw std::system_error(EIO, std::generic_category(), "svc_vc_create");
  }
  // A portmapper left with an old entry for the core program (a gateway that was killed) would point elsewhere.
  if (registerWithPortmapper) pmap_unset(DEVICE_CORE, DEVICE_CORE_VERSION);
  svc_register(transport_, DEVICE_CORE, DEVICE_CORE_VERSION, device_core_1, 0);
  registered_ = registerWithPortmapper && pmap_set(DEVICE_CORE, DEVICE_CORE_VERSION, IPPROTO_TCP, port_) == TRUE;
  svc_register(transport_, DEVICE_ASYNC, DEVICE_ASYNC_VERSION, device_async_1, 0);
  server_ = std::thread([this] { Serve(); });
}

Vxi11Gateway::~Vxi11Gateway() {
  const char byte = 0;
  [[maybe_unused]] const auto written = write(wake_[1], &byte, 1);
  server_.join();
  if (registered_) pmap_unset(DEVICE_CORE, DEVICE_CORE_VERSION);
  svc_unregister(DEVICE_CORE, DEVICE_CORE_VERSION);
  svc_unregister(DEVICE_ASYNC, DEVICE_ASYNC_VERSION);
  svc_destroy(transport_);
  // The connections still open are ended here: shut down, each reads as closed, and the RPC library then
  // destroys its transport (the library offers no other way to reach them).
  std::vector<pollfd> fds(svc_pollfd, svc_pollfd + svc_max_pollfd);
  for (const pollfd& fd : fds)
    if (fd.fd >= 0) shutdown(fd.fd, SHUT_RDWR);
  for (int round = 0; round < 100; ++round) {
    fds.assign(svc_pollfd, svc_pollfd + svc_max_pollfd);
    const int ready = poll(fds.data(), fds.size(), 0);
    if (ready <= 0) break;
    svc_getreq_poll(fds.data(), ready);
  }
  close(wake_[0]);
  close(wake_[1]);
  g_gateway = nullptr;
}

void Vxi11Gateway::Serve() {
  std::vector<pollfd> fds;
  for (;;) {
    fds.assign(svc_pollfd, svc_pollfd + svc_max_pollfd);
    fds.push_back({wake_[0], POLLIN, 0});
    const int ready = poll(fds.data(), fds.size(), -1);
    if (ready < 0) {
      if (errno == EINTR) continue;
      return;
    }
    if (fds.back().revents != 0) return;
    fds.pop_back();
    svc_getreq_poll(fds.data(), ready);
  }
}

Instrument* Vxi11Gateway::InstrumentOf(long lid, long& error) {
  const auto link = links_.find(lid);
  if (link == links_.end()) {
    error = kInvalidLink;
    return nullptr;
  }
  if (link->second.address < 0) {
    error = kUnsupported;  // the interface itself takes no data
    return nullptr;
  }
  if (lockHolder_ != 0 && lockHolder_ != lid) {
    error = kLocked;
    return nullptr;
  }
  error = kOk;
  return instruments_[static_cast<std::size_t>(link->second.address)];
}

long Vxi11Gateway::CreateLink(const std::string& device, long& lid) {
  const int address = ParseDevice(device);
  if (address == -2) return kInvalidAddress;
  if (address >= 0 && instruments_[static_cast<std::size_t>(address)] == nullptr) return kNotAccessible;
  lid = nextLid_++;
  links_[lid] = Link{address, {}, false};
  return kOk;
}

long Vxi11Gateway::Write(long lid, const std::uint8_t* data, std::size_t size, bool end) {
  long error = kOk;
  Instrument* instrument = InstrumentOf(lid, error);
  if (instrument == nullptr) return error;
  links_[lid].pending.clear();  // a new message: the unread rest of the last reply is gone
  instrument->Write(data, size, end);
  return kOk;
}

long Vxi11Gateway::Read(long lid, std::size_t requestSize, std::uint32_t timeoutMs, int termChar, char* data,
                        std::size_t& count, long& reason) {
  long error = kOk;
  Instrument* instrument = InstrumentOf(lid, error);
  if (instrument == nullptr) return error;
  Link& link = links_[lid];
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  count = 0;
  reason = 0;
  for (;;) {
    if (!link.pending.empty()) {
      std::size_t take = std::min(link.pending.size(), requestSize - count);
      if (termChar >= 0) {
        const auto at = link.pending.find(static_cast<char>(termChar));
        if (at != std::string::npos && at < take) {
          take = at + 1;
          reason |= kReasonChar;
        }
      }
      link.pending.copy(data + count, take);
      link.pending.erase(0, take);
      count += take;
      if (link.pending.empty() && link.pendingEnd) reason |= kReasonEnd;
    }
    if (count == requestSize) reason |= kReasonCount;
    if (reason != 0) return kOk;
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0 && count > 0) return kOk;
    // Without a termination character the bytes go straight into the reply; with one, through the lookahead.
    char* into = data + count;
    std::size_t room = requestSize - count;
    if (termChar >= 0) {
      link.pending.resize(std::min<std::size_t>(room, 64u << 10));
      into = link.pending.data();
      room = link.pending.size();
    }
    bool end = false;
    const std::size_t n = instrument->Read(reinterpret_cast<std::uint8_t*>(into), room,
                                           std::max(left, std::chrono::milliseconds(0)), end);
    if (termChar >= 0) {
      link.pending.resize(n);
      link.pendingEnd = end;
    } else {
      count += n;
      if (end) reason |= kReasonEnd;
    }
    if (n == 0) return count == 0 ? kTimeout : kOk;
  }
}

long Vxi11Gateway::ReadStatusByte(long lid, std::uint8_t& stb) {
  long error = kOk;
  Instrument* instrument = InstrumentOf(lid, error);
  if (instrument != nullptr) stb = instrument->SerialPoll();
  return error;
}

long Vxi11Gateway::Clear(long lid) {
  long error = kOk;
  Instrument* instrument = InstrumentOf(lid, error);
  if (instrument == nullptr) return error;
  links_[lid].pending.clear();
  instrument->DeviceClear();
  return kOk;
}

long Vxi11Gateway::Lock(long lid) {
  if (links_.count(lid) == 0) return kInvalidLink;
  if (lockHolder_ != 0 && lockHolder_ != lid) return kLocked;
  lockHolder_ = lid;
  return kOk;
}

long Vxi11Gateway::Unlock(long lid) {
  if (links_.count(lid) == 0) return kInvalidLink;
  if (lockHolder_ != lid) return kNoLock;
  lockHolder_ = 0;
  return kOk;
}

long Vxi11Gateway::KnownLink(long lid) { return links_.count(lid) == 0 ? kInvalidLink : kOk; }

long Vxi11Gateway::DestroyLink(long lid) {
  if (links_.erase(lid) == 0) return kInvalidLink;
  if (lockHolder_ == lid) lockHolder_ = 0;
  return kOk;
}

}  // namespace cvn73100::sim

// The procedures rpcgen's dispatchers call, answered by the gateway of the process. Data calls on a device locked
// by another link are refused.
using cvn73100::sim::Gateway;
using cvn73100::sim::kChannelNotEstablished;
using cvn73100::sim::kFlagEnd;
using cvn73100::sim::kFlagTermChar;
using cvn73100::sim::kUnsupported;

namespace {

bool_t Reply(Device_Error* result, long error) {
  result->error = error;
  return TRUE;
}

}  // namespace

extern "C" {

bool_t create_link_1_svc(Create_LinkParms* params, Create_LinkResp* result, svc_req*) {
  *result = {};
  result->error = Gateway().CreateLink(params->device ? params->device : "", result->lid);
  result->maxRecvSize = cvn73100::sim::Vxi11Gateway::kMaxBlock;
  result->abortPort = Gateway().Port();
  if (result->error == 0 && params->lockDevice) Gateway().Lock(result->lid);
  return TRUE;
}

bool_t device_write_1_svc(Device_WriteParms* params, Device_WriteResp* result, svc_req*) {
  *result = {};
  result->error = Gateway().Write(params->lid, reinterpret_cast<const std::uint8_t*>(params->data.data_val),
                                  params->data.data_len, (params->flags & kFlagEnd) != 0);
  if (result->error == 0) result->size = params->data.data_len;
  return TRUE;
}

bool_t device_read_1_svc(Device_ReadParms* params, Device_ReadResp* result, svc_req*) {
  *result = {};
  const int termChar = (params->flags & kFlagTermChar) != 0 ? static_cast<unsigned char>(params->termChar) : -1;
  const std::size_t size = std::min<std::size_t>(params->requestSize, cvn73100::sim::Vxi11Gateway::kMaxBlock);
  // Freed by the dispatcher through the XDR routines once the reply is out.
  result->data.data_val = static_cast<char*>(std::malloc(std::max<std::size_t>(size, 1)));
  std::size_t count = 0;
  result->error = Gateway().Read(params->lid, size, static_cast<std::uint32_t>(params->io_timeout), termChar,
                                 result->data.data_val, count, result->reason);
  result->data.data_len = static_cast<u_int>(count);
  return TRUE;
}

bool_t device_readstb_1_svc(Device_GenericParms* params, Device_ReadStbResp* result, svc_req*) {
  *result = {};
  std::uint8_t stb = 0;
  result->error = Gateway().ReadStatusByte(params->lid, stb);
  result->stb = stb;
  return TRUE;
}

bool_t device_trigger_1_svc(Device_GenericParms*, Device_Error* result, svc_req*) {
  return Reply(result, kUnsupported);
}

bool_t device_clear_1_svc(Device_GenericParms* params, Device_Error* result, svc_req*) {
  return Reply(result, Gateway().Clear(params->lid));
}

bool_t device_remote_1_svc(Device_GenericParms* params, Device_Error* result, svc_req*) {
  return Reply(result, Gateway().KnownLink(params->lid));
}

bool_t device_local_1_svc(Device_GenericParms* params, Device_Error* result, svc_req*) {
  return Reply(result, Gateway().KnownLink(params->lid));
}

bool_t device_lock_1_svc(Device_LockParms* params, Device_Error* result, svc_req*) {
  return Reply(result, Gateway().Lock(params->lid));
}

bool_t device_unlock_1_svc(Device_Link* lid, Device_Error* result, svc_req*) {
  return Reply(result, Gateway().Unlock(*lid));
}

bool_t device_enable_srq_1_svc(Device_EnableSrqParms* params, Device_Error* result, svc_req*) {
  return Reply(result, Gateway().KnownLink(params->lid));
}

bool_t device_docmd_1_svc(Device_DocmdParms*, Device_DocmdResp* result, svc_req*) {
  *result = {};
  result->error = kUnsupported;
  return TRUE;
}

bool_t destroy_link_1_svc(Device_Link* lid, Device_Error* result, svc_req*) {
  return Reply(result, Gateway().DestroyLink(*lid));
}

bool_t create_intr_chan_1_svc(Device_RemoteFunc*, Device_Error* result, svc_req*) {
  return Reply(result, kUnsupported);
}

bool_t destroy_intr_chan_1_svc(void*, Device_Error* result, svc_req*) { return Reply(result, kChannelNotEstablished); }

bool_t device_abort_1_svc(Device_Link* lid, Device_Error* result, svc_req*) {
  // Calls are served one at a time: by the time an abort is read there is nothing in progress to abort.
  return Reply(result, Gateway().KnownLink(*lid));
}

int device_core_1_freeresult(SVCXPRT*, xdrproc_t xdrResult, caddr_t result) {
  xdr_free(xdrResult, result);
  return TRUE;
}

int device_async_1_freeresult(SVCXPRT*, xdrproc_t xdrResult, caddr_t result) {
  xdr_free(xdrResult, result);
  return TRUE;
}

}  // extern "C"
