#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "iolib/Deadline.h"
#include "platform/InstrumentIO.h"

namespace cvn73100::io {

// The message conventions every backend shares, over a few raw hooks:
// - Output appends the output termination (10 = LF by default, 0 = nothing, any other byte value is appended as is)
//   and sends the whole as one message (EOI with the last byte on GPIB); WriteBytes sends its bytes the same way
//   without termination. Every write first drops unread input: a reply nobody read is stale once a new message goes
//   out, as a 488.2 device itself discards it.
// - Enter with the image "K" reads one message: up to and including LF, or up to a byte sent with EOI; a trailing
//   CR LF or LF is removed. Bytes that arrived after the LF are kept for the next read.
// - ReadBytes reads exactly `count` bytes; message ends do not stop it.
// - Each read or write call as a whole is bounded by Timeout. A read that times out drops whatever part of the
//   message had arrived and lets the backend make sure the rest of it cannot turn up later (AfterReadTimeout).
// Not thread-safe: one object serves one thread at a time.
class MessageIO : public IInstrumentIO, public IPort {
 public:
  static constexpr std::int32_t kDefaultTimeoutMs = 2000;
  // Longest reply Enter accepts; a device that talks on without an end is cut off there.
  static constexpr std::size_t kMaxMessageBytes = 16u << 20;
  // Most bytes asked of the backend in one raw read.
  static constexpr std::size_t kReadChunk = 64u << 10;

  explicit MessageIO(std::string resourceName);
  MessageIO(const MessageIO&) = delete;
  MessageIO& operator=(const MessageIO&) = delete;

  std::string ResourceName() const override { return m_resourceName; }
  std::int32_t Timeout() const override { return m_timeoutMs; }
  void SetTimeout(std::int32_t milliseconds) override;
  void Clear() override;
  void Output(const std::string& data) override;
  void Enter(std::string& data, const std::string& image = "K") override;
  std::int16_t OutputTermination() const override { return m_termination; }
  void SetOutputTermination(std::int16_t termination) override;
  std::int32_t ReadBytes(std::int32_t count, Bytes& buffer) override;
  void WriteBytes(std::int32_t count, const Bytes& buffer) override;
  IPort& Port() override { return *this; }
  ISerialIO* Serial() override { return nullptr; }
  void Close() override;

  bool IsOpen() const { return m_open; }

 protected:
  enum class ReadKind { Message, Bytes };

  // Sends `size` (> 0) bytes as one message; `end` asks for EOI with the last byte where the bus has it.
  virtual void DoWrite(const std::uint8_t* data, std::size_t size, bool end, const Deadline& deadline) = 0;
  // Blocks for at least one byte; returns 0 when the deadline passed first. `end` reports EOI on the last byte.
  virtual std::size_t DoRead(std::uint8_t* buffer, std::size_t max, ReadKind kind, const Deadline& deadline,
                             bool& end) = 0;
  // Device clear and dropping of everything buffered on the way.
  virtual void DoClear(const Deadline& deadline) = 0;
  // Drops input that arrived and was not read (called before every write).
  virtual void DoDropInput() {}
  // Called after a read timed out, before the timeout is raised; `partial`: part of a message had arrived.
  // Failures here are ignored.
  virtual void AfterReadTimeout(bool /*partial*/) {}
  // Called when Enter has taken a whole message and nothing of a later one is buffered.
  virtual void MessageEnded() {}
  virtual void OnTimeoutChanged() {}
  // Releases the device. Derived classes call Close() in their destructors.
  virtual void DoClose() noexcept = 0;

  void CheckOpen() const;
  Deadline CallDeadline() const { return Deadline::AfterMs(m_timeoutMs); }

 private:
  void Send(const std::uint8_t* data, std::size_t size);
  [[noreturn]] void ReadTimedOut(const char* what, bool partial);
  void DropPending();
  std::size_t PendingSize() const { return m_pending.size() - m_pendingStart; }
  std::uint8_t* Scratch();

  std::string m_resourceName;
  std::int32_t m_timeoutMs = kDefaultTimeoutMs;
  std::int16_t m_termination = 10;
  bool m_open = true;
  // Bytes read from the device and not yet handed out; m_pendingEnd: the last of them came with EOI.
  std::vector<std::uint8_t> m_pending;
  std::size_t m_pendingStart = 0;
  bool m_pendingEnd = false;
  std::unique_ptr<std::uint8_t[]> m_scratch;  // raw-read buffer of kReadChunk bytes, made on first use
};

}  // namespace cvn73100::io
