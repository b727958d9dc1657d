#include "iolib/LibSerialPortLine.h"

#include <fcntl.h>
#include <libserialport.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "iolib/ErrnoError.h"
#include "iolib/FdWait.h"

namespace cvn73100::io {
namespace {

std::string LastMessage() {
  char* text = sp_last_error_message();
  std::string message = text ? text : "unknown error";
  sp_free_error_message(text);
  return message;
}

// libserialport looks a port up in sysfs by the name below /dev/, so hand it the node a symlink points at.
std::string ResolvedPath(const std::string& path) {
  char resolved[PATH_MAX];
  if (::realpath(path.c_str(), resolved) == nullptr) return path;
  return resolved;
}

}  // namespace

LibSerialPortLine::LibSerialPortLine(const std::string& path) : m_path(path) {
  m_port = OpenPort();
  try {
    sp_get_port_handle(m_port, &m_fd);
    // Keep the port out of programs the host starts.
    ::fcntl(m_fd, F_SETFD, ::fcntl(m_fd, F_GETFD) | FD_CLOEXEC);
    Check(sp_set_baudrate(m_port, 9600), "baud rate");
    Check(sp_set_bits(m_port, 8), "data bits");
    Check(sp_set_parity(m_port, SP_PARITY_NONE), "parity");
    Check(sp_set_stopbits(m_port, 1), "stop bits");
    Check(sp_set_xon_xoff(m_port, SP_XONXOFF_DISABLED), "XON/XOFF");
    Check(sp_set_cts(m_port, SP_CTS_IGNORE), "CTS");
    Check(sp_set_dsr(m_port, SP_DSR_IGNORE), "DSR");
    Check(sp_set_dtr(m_port, SP_DTR_ON), "DTR");
    Check(sp_set_rts(m_port, SP_RTS_ON), "RTS");
    Check(sp_flush(m_port, SP_BUF_BOTH), "flush");
  } catch (const ScopeError& error) {
    Close();
    throw IOError(IOERR_OPEN_FAILED, m_path + ": " + error.Description());
  }
}

LibSerialPortLine::~LibSerialPortLine() { Close(); }

sp_port* LibSerialPortLine::OpenPort() const {
  if (::access(m_path.c_str(), F_OK) != 0) throw IOError(IOERR_OPEN_FAILED, m_path + ": " + std::strerror(errno));
  sp_port* port = nullptr;
  if (sp_get_port_by_name(ResolvedPath(m_path).c_str(), &port) != SP_OK)
    throw IOError(IOERR_OPEN_FAILED, m_path + ": not a serial port");
  if (sp_open(port, SP_MODE_READ_WRITE) != SP_OK) {
    const std::string message = LastMessage();
    sp_free_port(port);
    throw IOError(IOERR_OPEN_FAILED, m_path + ": " + message);
  }
  return port;
}

void LibSerialPortLine::Check(int result, const char* what) {
  if (result >= 0) return;
  if (!m_port) throw IOError(IOERR_CLOSED);
  switch (result) {
    case SP_ERR_ARG:
      throw IOError(IOERR_BAD_ARGUMENT, std::string(what) + ": " + LastMessage());
    case SP_ERR_SUPP:
      throw IOError(IOERR_UNSUPPORTED, std::string(what) + ": " + LastMessage());
    case SP_ERR_FAIL:
      throw ErrnoError::Make(sp_last_error_code(), m_path + " " + what);
    default:
      throw IOError(IOERR_IO_FAILURE, std::string(what) + ": " + LastMessage());
  }
}

void LibSerialPortLine::Write(const std::uint8_t* data, std::size_t size, const Deadline& deadline) {
  std::size_t done = 0;
  while (done < size) {
    FdWait::UntilWritable(m_fd, deadline, m_path);
    const int n = sp_nonblocking_write(m_port, data + done, size - done);
    if (n < 0) Check(n, "write");
    done += static_cast<std::size_t>(n);
  }
}

std::size_t LibSerialPortLine::Read(std::uint8_t* buffer, std::size_t max, const Deadline& deadline) {
  for (;;) {
    if (!FdWait::UntilReadable(m_fd, deadline, m_path)) return 0;
    const int n = sp_nonblocking_read(m_port, buffer, max);
    if (n < 0) Check(n, "read");
    if (n > 0) return static_cast<std::size_t>(n);
    // Readable with nothing to read: the line hung up (the adapter was unplugged).
    if (FdWait::HungUp(m_fd)) throw IOError(IOERR_DEVICE_VANISHED, m_path);
  }
}

void LibSerialPortLine::DropInput() {
  const int waiting = sp_input_waiting(m_port);
  Check(waiting, "input queue");
  if (waiting > 0) Check(sp_flush(m_port, SP_BUF_INPUT), "flush");
}

void LibSerialPortLine::Flush(const Deadline& deadline) {
  for (;;) {
    const int waiting = sp_output_waiting(m_port);
    Check(waiting, "output queue");
    if (waiting == 0 || deadline.Expired()) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  Check(sp_flush(m_port, SP_BUF_BOTH), "flush");
}

void LibSerialPortLine::Close() noexcept {
  if (!m_port) return;
  sp_close(m_port);
  sp_free_port(m_port);
  m_port = nullptr;
  m_fd = -1;
}

void LibSerialPortLine::SetBaudRate(std::int32_t baud) {
  if (baud <= 0) throw IOError(IOERR_BAD_ARGUMENT, "baud rate " + std::to_string(baud));
  Check(sp_set_baudrate(m_port, baud), "baud rate");
}

void LibSerialPortLine::SetDataBits(int bits) { Check(sp_set_bits(m_port, bits), "data bits"); }
void LibSerialPortLine::SetStopBits(int bits) { Check(sp_set_stopbits(m_port, bits), "stop bits"); }

void LibSerialPortLine::SetHandshake(std::int16_t handshake) {
  const bool xonXoff = handshake == RS232_HandShake_XON_XOFF;
  Check(sp_set_xon_xoff(m_port, xonXoff ? SP_XONXOFF_INOUT : SP_XONXOFF_DISABLED), "XON/XOFF");
}

void LibSerialPortLine::SetDTR(bool asserted) { Check(sp_set_dtr(m_port, asserted ? SP_DTR_ON : SP_DTR_OFF), "DTR"); }
void LibSerialPortLine::SetRTS(bool asserted) { Check(sp_set_rts(m_port, asserted ? SP_RTS_ON : SP_RTS_OFF), "RTS"); }

bool LibSerialPortLine::DSR() {
  sp_signal signals{};
  Check(sp_get_signals(m_port, &signals), "modem lines");
  return (signals & SP_SIG_DSR) != 0;
}

}  // namespace cvn73100::io
