#include "iolib/Vxi11Link.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <random>

#include "iolib/TcpStream.h"
#include "platform/Interrupt.h"
#include "vxi11.h"

// After the generated header, which brings the RPC types the portmapper header needs.
#include <rpc/pmap_prot.h>

namespace cvn73100::io {
namespace {

// How much longer than the gateway's own I/O timeout an RPC call may take before the gateway counts as gone.
constexpr std::chrono::milliseconds kRpcMargin{1000};
constexpr std::chrono::milliseconds kCloseWait{500};
// Largest reply asked for in one device_read, and the most a gateway may announce as its write block.
constexpr std::size_t kMaxBlock = 1u << 20;
// The RPC library's largest record buffers: fewer system calls per block.
constexpr unsigned kRpcBuffer = 256u << 10;

// The RPC library writes to its socket with write(): a peer that has gone must cost an error, not the process.
// SIGPIPE is blocked on this thread for the call, and one raised by a failed call is taken away before unblocking.
class SigPipeBlock {
 public:
  SigPipeBlock() {
    sigemptyset(&m_pipe);
    sigaddset(&m_pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &m_pipe, &m_old);
  }
  ~SigPipeBlock() { pthread_sigmask(SIG_SETMASK, &m_old, nullptr); }
  SigPipeBlock(const SigPipeBlock&) = delete;
  SigPipeBlock& operator=(const SigPipeBlock&) = delete;
  void TakePending() {
    const timespec zero{};
    while (sigtimedwait(&m_pipe, nullptr, &zero) > 0) {
    }
  }

 private:
  sigset_t m_pipe{};
  sigset_t m_old{};
};

u_long Milliseconds(std::chrono::milliseconds span) {
  return static_cast<u_long>(std::clamp<std::int64_t>(span.count(), 0, 0x7FFFFFFF));
}

timeval ToTimeval(std::chrono::milliseconds span) {
  return timeval{static_cast<time_t>(span.count() / 1000), static_cast<suseconds_t>(span.count() % 1000 * 1000)};
}

// An RPC client on a TCP connection to host:port made within the deadline; the client owns the socket.
CLIENT* Connect(const std::string& host, int port, rpcprog_t program, rpcvers_t version, const Deadline& deadline) {
  TcpStream stream(host, port, deadline);
  const int fd = stream.Release();
  ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);  // the RPC library expects a blocking socket
  sockaddr_storage peer{};
  socklen_t length = sizeof peer;
  ::getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &length);
  netbuf address{static_cast<unsigned>(sizeof peer), static_cast<unsigned>(length), &peer};
  CLIENT* client = clnt_vc_create(fd, &address, program, version, kRpcBuffer, kRpcBuffer);
  if (client == nullptr) {
    ::close(fd);
    throw IOError(IOERR_OPEN_FAILED, host + ":" + std::to_string(port) + ": " + clnt_spcreateerror("RPC"));
  }
  clnt_control(client, CLSET_FD_CLOSE, nullptr);
  return client;
}

void SetWait(CLIENT* client, std::chrono::milliseconds wait) {
  timeval limit = ToTimeval(wait);
  clnt_control(client, CLSET_TIMEOUT, reinterpret_cast<char*>(&limit));
}

// Raises the I/O library's error for an RPC call that did not go through.
[[noreturn]] void RaiseCallError(clnt_stat status, const std::string& name, const char* what) {
  if (status == RPC_TIMEDOUT) throw IOError(IOERR_TIMEOUT, name + ": " + what + ": the gateway did not answer");
  if (status == RPC_CANTSEND || status == RPC_CANTRECV)
    throw IOError(IOERR_DEVICE_VANISHED, name + ": " + what + ": link lost");
  throw IOError(IOERR_IO_FAILURE, name + ": " + what + ": " + clnt_sperrno(status));
}

template <typename Params, typename Result>
void Call(CLIENT* client, const std::string& name, clnt_stat (*procedure)(Params*, Result*, CLIENT*), Params& params,
          Result& result, std::chrono::milliseconds wait, const char* what) {
  if (client == nullptr) throw IOError(IOERR_DEVICE_VANISHED, name + ": link closed");
  SetWait(client, wait);
  SigPipeBlock block;
  const clnt_stat status = procedure(&params, &result, client);
  if (status == RPC_SUCCESS) return;
  block.TakePending();
  RaiseCallError(status, name, what);
}

// The TCP port of the core channel, asked of the portmapper at `host`.
int CorePort(const std::string& host, const Deadline& deadline) {
  CLIENT* portmapper = Connect(host, Vxi11Link::kPortmapperPort, PMAPPROG, PMAPVERS, deadline);
  pmap query{DEVICE_CORE, DEVICE_CORE_VERSION, IPPROTO_TCP, 0};
  u_long port = 0;
  SetWait(portmapper, std::chrono::duration_cast<std::chrono::milliseconds>(deadline.Remaining()));
  clnt_stat status;
  {
    SigPipeBlock block;
    status = clnt_call(portmapper, PMAPPROC_GETPORT, reinterpret_cast<xdrproc_t>(xdr_pmap),
                       reinterpret_cast<char*>(&query), reinterpret_cast<xdrproc_t>(xdr_u_long),
                       reinterpret_cast<char*>(&port), ToTimeval(std::chrono::milliseconds(deadline.RemainingMs())));
    if (status != RPC_SUCCESS) block.TakePending();
  }
  clnt_destroy(portmapper);
  if (status != RPC_SUCCESS) throw IOError(IOERR_OPEN_FAILED, host + ": portmapper: " + clnt_sperrno(status));
  if (port == 0 || port > 65535) throw IOError(IOERR_OPEN_FAILED, host + ": no VXI-11 service registered");
  return static_cast<int>(port);
}

}  // namespace

std::string Vxi11Link::ErrorText(long code) {
  switch (code) {
    case 1:
      return "syntax error";
    case kErrNotAccessible:
      return "device not accessible (no such device)";
    case kErrInvalidLink:
      return "invalid link identifier (link lost)";
    case 5:
      return "parameter error";
    case 6:
      return "channel not established";
    case kErrUnsupported:
      return "operation not supported";
    case 9:
      return "out of resources";
    case kErrLocked:
      return "device locked by another link";
    case 12:
      return "no lock held by this link";
    case kErrTimeout:
      return "I/O timeout";
    case kErrIO:
      return "I/O error";
    case kErrInvalidAddress:
      return "invalid address (no such device)";
    case 23:
      return "abort";
    case 29:
      return "channel already established";
    default:
      return "error " + std::to_string(code);
  }
}

ScopeError Vxi11Link::GatewayError(long code, const std::string& what) {
  const std::string detail = what + ": " + ErrorText(code) + " (VXI-11 error " + std::to_string(code) + ")";
  switch (code) {
    case kErrNotAccessible:
    case kErrInvalidAddress:
      return IOError(IOERR_NO_LISTENER, detail);
    case kErrTimeout:
      return IOError(IOERR_TIMEOUT, detail);
    case kErrInvalidLink:
      return IOError(IOERR_DEVICE_VANISHED, detail);
    case kErrUnsupported:
      return IOError(IOERR_UNSUPPORTED, detail);
    default:
      return IOError(IOERR_IO_FAILURE, detail);
  }
}

Vxi11Link::Vxi11Link(const std::string& host, int port, const std::string& device, const Deadline& deadline)
    : m_name(host + "/" + device) {
  m_client = Connect(host, port > 0 ? port : CorePort(host, deadline), DEVICE_CORE, DEVICE_CORE_VERSION, deadline);
  static thread_local std::minstd_rand ids{std::random_device{}()};
  Create_LinkParms params{static_cast<long>(ids() & 0x7FFFFFFF), FALSE, 0, const_cast<char*>(device.c_str())};
  Create_LinkResp result{};
  try {
    Call(m_client, m_name, create_link_1, params, result,
         std::chrono::duration_cast<std::chrono::milliseconds>(deadline.Remaining()) + kRpcMargin, "create_link");
    if (result.error != kErrNone) throw GatewayError(result.error, m_name + ": create_link");
  } catch (...) {
    clnt_destroy(m_client);
    m_client = nullptr;
    throw;
  }
  m_lid = result.lid;
  m_maxRecvSize = std::clamp<std::size_t>(result.maxRecvSize, 1, kMaxBlock);
}

Vxi11Link::~Vxi11Link() { Close(); }

void Vxi11Link::Close() noexcept {
  if (m_client == nullptr) return;
  Device_Link lid = m_lid;
  Device_Error result{};
  try {
    Call(m_client, m_name, destroy_link_1, lid, result, kCloseWait, "destroy_link");
  } catch (const ScopeError&) {
    // The gateway drops a link whose channel closes.
  }
  clnt_destroy(m_client);
  m_client = nullptr;
  DropAhead();
}

void Vxi11Link::Check(long code, const char* what) const {
  if (code != kErrNone) throw GatewayError(code, m_name + ": " + what);
}

void Vxi11Link::Write(const std::uint8_t* data, std::size_t size, bool end, const Deadline& deadline) {
  std::size_t done = 0;
  do {
    const std::size_t block = std::min(size - done, m_maxRecvSize);
    const bool last = done + block == size;
    const auto wait = std::chrono::milliseconds(deadline.RemainingMs());
    Device_WriteParms params{
        m_lid,
        Milliseconds(wait),
        0,
        last && end ? kFlagEnd : 0,
        {static_cast<u_int>(block), reinterpret_cast<char*>(const_cast<std::uint8_t*>(data + done))}};
    Device_WriteResp result{};
    Call(m_client, m_name, device_write_1, params, result, wait + kRpcMargin, "device_write");
    Check(result.error, "device_write");
    if (result.size > block) throw IOError(IOERR_IO_FAILURE, m_name + ": device_write took more than was sent");
    done += result.size;
    if (result.size < block && deadline.Expired()) throw IOError(IOERR_TIMEOUT, m_name + ": device_write");
  } while (done < size);
}

std::size_t Vxi11Link::Read(std::uint8_t* buffer, std::size_t max, int termChar, const Deadline& deadline, bool& end) {
  end = false;
  const bool useTermChar = termChar >= 0 && termChar <= 255;
  while (m_aheadPos == m_aheadLen) {
    DropAhead();
    Interrupt::Check();
    // Short slices while someone may ask to stop, so a long read still notices in time.
    const auto slice = Interrupt::Slice(std::chrono::milliseconds(deadline.RemainingMs()));
    // As much as the gateway gives in one call, whatever the caller asked: a block costs few round trips.
    Device_ReadParms params{m_lid,
                            kMaxBlock,
                            Milliseconds(slice),
                            0,
                            useTermChar ? kFlagTermChar : 0,
                            static_cast<char>(useTermChar ? termChar : 0)};
    Device_ReadResp result{};
    Call(m_client, m_name, device_read_1, params, result, slice + kRpcMargin, "device_read");
    m_ahead = result.data.data_val;  // kept until it has been handed out
    m_aheadLen = result.data.data_len;
    m_aheadEnd = result.error == kErrNone && (result.reason & kReasonEnd) != 0;
    if (m_aheadLen > kMaxBlock) {
      DropAhead();
      throw IOError(IOERR_IO_FAILURE, m_name + ": device_read returned more than was asked");
    }
    if (result.error != kErrNone && result.error != kErrTimeout) Check(result.error, "device_read");
    if (m_aheadLen == 0 && deadline.Expired()) return 0;
  }
  const std::size_t count = std::min(max, m_aheadLen - m_aheadPos);
  std::memcpy(buffer, m_ahead + m_aheadPos, count);
  m_aheadPos += count;
  end = m_aheadPos == m_aheadLen && m_aheadEnd;
  return count;
}

void Vxi11Link::DropAhead() noexcept {
  std::free(m_ahead);
  m_ahead = nullptr;
  m_aheadLen = m_aheadPos = 0;
}

void Vxi11Link::Clear(const Deadline& deadline) {
  DropAhead();
  const auto wait = std::chrono::milliseconds(deadline.RemainingMs());
  Device_GenericParms params{m_lid, 0, 0, Milliseconds(wait)};
  Device_Error result{};
  Call(m_client, m_name, device_clear_1, params, result, wait + kRpcMargin, "device_clear");
  Check(result.error, "device_clear");
}

std::uint8_t Vxi11Link::ReadStatusByte(const Deadline& deadline) {
  const auto wait = std::chrono::milliseconds(deadline.RemainingMs());
  Device_GenericParms params{m_lid, 0, 0, Milliseconds(wait)};
  Device_ReadStbResp result{};
  Call(m_client, m_name, device_readstb_1, params, result, wait + kRpcMargin, "device_readstb");
  Check(result.error, "device_readstb");
  return result.stb;
}

}  // namespace cvn73100::io
