#include "iolib/Rfc2217Line.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <set>

#include "platform/InstrumentIO.h"

namespace cvn73100::io {
namespace {

constexpr std::uint8_t IAC = 255, DONT = 254, DO = 253, WONT = 252, WILL = 251, SB = 250, SE = 240;
constexpr std::uint8_t BINARY = 0, SGA = 3, COM_PORT = 44;
// Com port commands (client to server; the server answers with the same code + 100).
constexpr std::uint8_t SET_BAUDRATE = 1, SET_DATASIZE = 2, SET_PARITY = 3, SET_STOPSIZE = 4, SET_CONTROL = 5,
                       FLOWCONTROL_SUSPEND = 8, FLOWCONTROL_RESUME = 9, PURGE_DATA = 12;
constexpr std::uint8_t NOTIFY_MODEMSTATE = 7;
constexpr std::uint8_t kAnswerOffset = 100;
constexpr std::uint8_t PARITY_NONE = 1;
constexpr std::uint8_t CONTROL_NO_FLOW = 1, CONTROL_XONXOFF = 2, CONTROL_DTR_ON = 8, CONTROL_DTR_OFF = 9,
                       CONTROL_RTS_ON = 11, CONTROL_RTS_OFF = 12, CONTROL_IN_NO_FLOW = 14, CONTROL_IN_XONXOFF = 15,
                       CONTROL_IN_DTR = 18, CONTROL_DSR = 19;
constexpr std::uint8_t PURGE_RECEIVED = 1;                    // what the server got from the device and has not sent on
constexpr std::uint8_t MODEM_DSR = 0x20, MODEM_LINES = 0xF0;  // CD, RI, DSR, CTS
constexpr std::chrono::milliseconds kConnectWait{3000};

bool Supported(std::uint8_t option) { return option == BINARY || option == SGA || option == COM_PORT; }

// Requests ("DTR line" at host:port) a server left unanswered once: not waited for again by this process.
class Unanswered {
 public:
  static bool Known(const std::string& key) {
    std::lock_guard lock(Mutex());
    return Keys().count(key) != 0;
  }
  static void Add(const std::string& key) {
    std::lock_guard lock(Mutex());
    Keys().insert(key);
  }

 private:
  static std::mutex& Mutex() {
    static std::mutex mutex;
    return mutex;
  }
  static std::set<std::string>& Keys() {
    static std::set<std::string> keys;
    return keys;
  }
};

}  // namespace

std::vector<std::uint8_t> Rfc2217Line::Subnegotiation(std::uint8_t command, const std::vector<std::uint8_t>& value) {
  std::vector<std::uint8_t> bytes{IAC, SB, COM_PORT, command};
  for (std::uint8_t b : value) {
    bytes.push_back(b);
    if (b == IAC) bytes.push_back(IAC);
  }
  bytes.push_back(IAC);
  bytes.push_back(SE);
  return bytes;
}

Rfc2217Line::Rfc2217Line(const std::string& host, int port)
    : m_name(host + ":" + std::to_string(port)),
      m_stream(std::make_unique<TcpStream>(host, port, Deadline(kConnectWait))) {
  const Deadline deadline(kAckWait);
  for (std::uint8_t option : {BINARY, COM_PORT, SGA}) m_localOn[option] = true;
  for (std::uint8_t option : {BINARY, SGA}) m_remoteOn[option] = true;
  SendRaw({IAC, WILL, BINARY, IAC, DO, BINARY, IAC, WILL, COM_PORT, IAC, WILL, SGA, IAC, DO, SGA}, deadline);
  while (!m_comPortAnswered && !deadline.Expired()) Pump(deadline);
  if (!m_comPortAnswered || !m_localOn[COM_PORT])
    throw IOError(IOERR_OPEN_FAILED, m_name + ": the server did not take the com port control option" +
                                         (m_comPortAnswered ? "" : " within 1 s"));
  SetBaudRate(9600);
  SetDataBits(8);
  Command(SET_PARITY, {PARITY_NONE}, Need::Required, "parity");
  SetStopBits(1);
  SetHandshake(RS232_HandShake_None);
  SetDTR(true);
  SetRTS(true);
  m_settingFailure = IOERR_IO_FAILURE;
}

Rfc2217Line::~Rfc2217Line() { Close(); }

void Rfc2217Line::Close() noexcept {
  if (m_stream) m_stream->Close();
}

void Rfc2217Line::SendRaw(const std::vector<std::uint8_t>& bytes, const Deadline& deadline) {
  m_stream->Write(bytes.data(), bytes.size(), deadline);
}

void Rfc2217Line::Command(std::uint8_t command, const std::vector<std::uint8_t>& value, Need need, const char* what) {
  const Deadline deadline(need == Need::Required ? kAckWait : kOptionalAckWait);
  const std::string key = std::string(what) + " at " + m_name;
  m_answered[command] = false;
  SendRaw(Subnegotiation(command, value), deadline);
  if (need == Need::IfAnswered && Unanswered::Known(key)) return;
  while (!m_answered[command] && !deadline.Expired()) Pump(deadline);
  if (m_answered[command]) return;
  if (need == Need::Required)
    throw IOError(m_settingFailure, m_name + ": the server did not acknowledge the " + what + " within 1 s");
  Unanswered::Add(key);
}

void Rfc2217Line::Pump(const Deadline& deadline) {
  std::uint8_t raw[4096];
  const std::size_t n = m_stream->Read(raw, sizeof raw, deadline);
  Parse(raw, n);
}

void Rfc2217Line::Parse(const std::uint8_t* bytes, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    const std::uint8_t b = bytes[i];
    switch (m_state) {
      case State::Data:
        if (b == IAC)
          m_state = State::Iac;
        else
          m_input.push_back(b);
        break;
      case State::Iac:
        if (b == IAC) {
          m_input.push_back(IAC);
          m_state = State::Data;
        } else if (b >= WILL && b <= DONT) {
          m_verb = b;
          m_state = State::Verb;
        } else if (b == SB) {
          m_sub.clear();
          m_state = State::Sub;
        } else {
          m_state = State::Data;  // NOP, GA and the like carry nothing for a serial line
        }
        break;
      case State::Verb:
        Negotiate(m_verb, b);
        m_state = State::Data;
        break;
      case State::Sub:
        if (b == IAC)
          m_state = State::SubIac;
        else if (m_sub.size() < 64)
          m_sub.push_back(b);
        break;
      case State::SubIac:
        if (b == SE) {
          Subnegotiated();
          m_state = State::Data;
        } else {
          if (m_sub.size() < 64) m_sub.push_back(b);  // IAC IAC inside: one 255
          m_state = State::Sub;
        }
        break;
    }
  }
}

void Rfc2217Line::Negotiate(std::uint8_t verb, std::uint8_t option) {
  // Answer only what changes the state, so that the two sides never loop; a refusal is always accepted.
  const auto reply = [this](std::uint8_t answer, std::uint8_t opt) { SendRaw({IAC, answer, opt}, Deadline(kAckWait)); };
  switch (verb) {
    case DO:
      if (option == COM_PORT) m_comPortAnswered = true;
      if (m_localOn[option]) return;
      if (Supported(option)) {
        m_localOn[option] = true;
        reply(WILL, option);
      } else {
        reply(WONT, option);
      }
      return;
    case DONT:
      if (option == COM_PORT) m_comPortAnswered = true;
      m_localOn[option] = false;
      return;
    case WILL:
      if (m_remoteOn[option]) return;
      if (Supported(option)) {
        m_remoteOn[option] = true;
        reply(DO, option);
      } else {
        reply(DONT, option);
      }
      return;
    default:  // WONT
      m_remoteOn[option] = false;
      return;
  }
}

void Rfc2217Line::Subnegotiated() {
  if (m_sub.size() < 2 || m_sub[0] != COM_PORT || m_sub[1] < kAnswerOffset) return;
  const int command = m_sub[1] - kAnswerOffset;
  if (command == FLOWCONTROL_SUSPEND) m_suspended = true;
  if (command == FLOWCONTROL_RESUME) m_suspended = false;
  if (command == NOTIFY_MODEMSTATE && m_sub.size() >= 3) {
    m_modemState = m_sub[2];
    m_modemLinesSeen = m_modemLinesSeen || (m_modemState & MODEM_LINES) != 0;
  }
  if (command >= 0 && command < static_cast<int>(m_answered.size()))
    m_answered[static_cast<std::size_t>(command)] = true;
}

void Rfc2217Line::Write(const std::uint8_t* data, std::size_t size, const Deadline& deadline) {
  while (m_suspended) {
    if (deadline.Expired()) throw IOError(IOERR_TIMEOUT, "write to " + m_name + ": the server holds the data");
    Pump(deadline);
  }
  std::vector<std::uint8_t> escaped;
  escaped.reserve(size + 16);
  for (std::size_t i = 0; i < size; ++i) {
    escaped.push_back(data[i]);
    if (data[i] == IAC) escaped.push_back(IAC);
  }
  SendRaw(escaped, deadline);
}

std::size_t Rfc2217Line::Read(std::uint8_t* buffer, std::size_t max, const Deadline& deadline) {
  while (m_inputStart == m_input.size()) {
    m_input.clear();
    m_inputStart = 0;
    if (deadline.Expired()) return 0;
    Pump(deadline);
  }
  const std::size_t n = std::min(max, m_input.size() - m_inputStart);
  std::memcpy(buffer, m_input.data() + m_inputStart, n);
  m_inputStart += n;
  return n;
}

void Rfc2217Line::DropInput() {
  // Telnet commands waiting in the socket still count; only the data among them is dropped.
  const Deadline now(std::chrono::milliseconds(0));
  for (std::size_t before = SIZE_MAX; before != m_input.size();) {
    before = m_input.size();
    Pump(now);
  }
  m_input.clear();
  m_inputStart = 0;
}

void Rfc2217Line::SetBaudRate(std::int32_t baud) {
  if (baud <= 0) throw IOError(IOERR_BAD_ARGUMENT, "baud rate " + std::to_string(baud));
  const auto b = static_cast<std::uint32_t>(baud);
  Command(SET_BAUDRATE,
          {static_cast<std::uint8_t>(b >> 24), static_cast<std::uint8_t>(b >> 16), static_cast<std::uint8_t>(b >> 8),
           static_cast<std::uint8_t>(b)},
          Need::Required, "baud rate");
}

void Rfc2217Line::SetDataBits(int bits) {
  if (bits < 5 || bits > 8) throw IOError(IOERR_BAD_ARGUMENT, "data bits " + std::to_string(bits));
  Command(SET_DATASIZE, {static_cast<std::uint8_t>(bits)}, Need::Required, "data bits");
}

void Rfc2217Line::SetStopBits(int bits) {
  if (bits != 1 && bits != 2) throw IOError(IOERR_BAD_ARGUMENT, "stop bits " + std::to_string(bits));
  Command(SET_STOPSIZE, {static_cast<std::uint8_t>(bits)}, Need::Required, "stop bits");
}

void Rfc2217Line::SetHandshake(std::int16_t handshake) {
  std::uint8_t outbound = CONTROL_NO_FLOW, inbound = CONTROL_IN_NO_FLOW;
  if (handshake == RS232_HandShake_XON_XOFF) {
    outbound = CONTROL_XONXOFF;
    inbound = CONTROL_IN_XONXOFF;
  } else if (handshake == RS232_HandShake_DTR_DSR) {
    outbound = CONTROL_DSR;
    inbound = CONTROL_IN_DTR;
  }
  Command(SET_CONTROL, {outbound}, Need::IfAnswered, "flow control");
  Command(SET_CONTROL, {inbound}, Need::IfAnswered, "flow control");
}

void Rfc2217Line::SetDTR(bool asserted) {
  Command(SET_CONTROL, {asserted ? CONTROL_DTR_ON : CONTROL_DTR_OFF}, Need::IfAnswered, "DTR line");
}

void Rfc2217Line::SetRTS(bool asserted) {
  Command(SET_CONTROL, {asserted ? CONTROL_RTS_ON : CONTROL_RTS_OFF}, Need::IfAnswered, "RTS line");
}

bool Rfc2217Line::DSR() {
  Pump(Deadline(std::chrono::milliseconds(0)));
  return !m_modemLinesSeen || (m_modemState & MODEM_DSR) != 0;
}

void Rfc2217Line::Flush(const Deadline&) {
  // Bytes we wrote are passed on by the server at line speed and are left alone; what the device sent and the
  // server still holds is stale.
  Command(PURGE_DATA, {PURGE_RECEIVED}, Need::IfAnswered, "purge");
  DropInput();
}

}  // namespace cvn73100::io
