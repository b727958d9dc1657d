#include "iolib/MessageIO.h"

#include <algorithm>

namespace cvn73100::io {
namespace {

bool IsFreeFieldImage(const std::string& image) { return image == "K" || image == "k"; }

}  // namespace

MessageIO::MessageIO(std::string resourceName) : m_resourceName(std::move(resourceName)) {}

void MessageIO::CheckOpen() const {
  if (!m_open) throw IOError(IOERR_CLOSED, m_resourceName);
}

void MessageIO::SetTimeout(std::int32_t milliseconds) {
  CheckOpen();
  if (milliseconds < 0) throw IOError(IOERR_BAD_ARGUMENT, "timeout " + std::to_string(milliseconds));
  m_timeoutMs = milliseconds;
  OnTimeoutChanged();
}

void MessageIO::SetOutputTermination(std::int16_t termination) {
  CheckOpen();
  if (termination < 0 || termination > 255)
    throw IOError(IOERR_BAD_ARGUMENT, "output termination " + std::to_string(termination));
  m_termination = termination;
}

void MessageIO::Clear() {
  CheckOpen();
  DropPending();
  DoClear(CallDeadline());
}

void MessageIO::Output(const std::string& data) {
  CheckOpen();
  Bytes bytes(data.begin(), data.end());
  if (m_termination != 0) bytes.push_back(static_cast<std::uint8_t>(m_termination));
  Send(bytes.data(), bytes.size());
}

void MessageIO::WriteBytes(std::int32_t count, const Bytes& buffer) {
  CheckOpen();
  if (count < 0 || static_cast<std::size_t>(count) > buffer.size())
    throw IOError(IOERR_BAD_ARGUMENT, "byte count " + std::to_string(count));
  Send(buffer.data(), static_cast<std::size_t>(count));
}

void MessageIO::Send(const std::uint8_t* data, std::size_t size) {
  DropPending();
  DoDropInput();
  if (size > 0) DoWrite(data, size, true, CallDeadline());
}

void MessageIO::Enter(std::string& data, const std::string& image) {
  CheckOpen();
  if (!IsFreeFieldImage(image)) throw IOError(IOERR_BAD_ARGUMENT, "read image \"" + image + "\"");
  const Deadline deadline = CallDeadline();
  std::string message;
  try {
    for (;;) {
      if (PendingSize() == 0) {
        DropPending();
        bool end = false;
        const std::size_t n = DoRead(Scratch(), kReadChunk, ReadKind::Message, deadline, end);
        if (n == 0) ReadTimedOut("reply", !message.empty());
        m_pending.assign(Scratch(), Scratch() + n);
        m_pendingEnd = end;
      }
      const auto begin = m_pending.begin() + static_cast<std::ptrdiff_t>(m_pendingStart);
      const auto lineFeed = std::find(begin, m_pending.end(), std::uint8_t{'\n'});
      if (lineFeed != m_pending.end()) {
        message.append(begin, lineFeed + 1);
        m_pendingStart = static_cast<std::size_t>(lineFeed + 1 - m_pending.begin());
        break;
      }
      message.append(begin, m_pending.end());
      const bool endOfMessage = m_pendingEnd;
      DropPending();
      if (endOfMessage) break;
      if (message.size() > kMaxMessageBytes)
        throw IOError(IOERR_IO_FAILURE, "reply longer than " + std::to_string(kMaxMessageBytes) + " bytes");
    }
  } catch (...) {
    DropPending();
    throw;
  }
  if (PendingSize() == 0) {
    DropPending();
    MessageEnded();
  }
  if (!message.empty() && message.back() == '\n') {
    message.pop_back();
    if (!message.empty() && message.back() == '\r') message.pop_back();
  }
  data = std::move(message);
}

std::int32_t MessageIO::ReadBytes(std::int32_t count, Bytes& buffer) {
  CheckOpen();
  if (count < 0) throw IOError(IOERR_BAD_ARGUMENT, "byte count " + std::to_string(count));
  const std::size_t wanted = static_cast<std::size_t>(count);
  const Deadline deadline = CallDeadline();
  Bytes bytes;
  // Grow with what arrives, not with what was asked for.
  bytes.reserve(std::min(wanted, kReadChunk));
  try {
    const std::size_t fromPending = std::min(wanted, PendingSize());
    const auto begin = m_pending.begin() + static_cast<std::ptrdiff_t>(m_pendingStart);
    bytes.insert(bytes.end(), begin, begin + static_cast<std::ptrdiff_t>(fromPending));
    m_pendingStart += fromPending;
    // A message that has ended sends nothing more: stop there rather than wait out the timeout.
    bool ended = false;
    if (PendingSize() == 0) {
      ended = fromPending > 0 && m_pendingEnd;
      DropPending();
    }
    while (bytes.size() < wanted && !ended) {
      const std::size_t n =
          DoRead(Scratch(), std::min(wanted - bytes.size(), kReadChunk), ReadKind::Bytes, deadline, ended);
      if (n == 0) ReadTimedOut("bytes", !bytes.empty());
      bytes.insert(bytes.end(), Scratch(), Scratch() + n);
    }
  } catch (...) {
    DropPending();
    throw;
  }
  buffer = std::move(bytes);
  return static_cast<std::int32_t>(buffer.size());
}

void MessageIO::ReadTimedOut(const char* what, bool partial) {
  DropPending();
  try {
    AfterReadTimeout(partial);
  } catch (...) {
    // The timeout is what the caller needs to hear about.
  }
  throw IOError(IOERR_TIMEOUT,
                std::string(what) + " from " + m_resourceName + " within " + std::to_string(m_timeoutMs) + " ms");
}

std::uint8_t* MessageIO::Scratch() {
  if (!m_scratch) m_scratch.reset(new std::uint8_t[kReadChunk]);
  return m_scratch.get();
}

void MessageIO::DropPending() {
  m_pending.clear();
  m_pendingStart = 0;
  m_pendingEnd = false;
}

void MessageIO::Close() {
  if (!m_open) return;
  m_open = false;
  DropPending();
  DoClose();
}

}  // namespace cvn73100::io
