#include "simulator/Instrument.h"

#include <algorithm>
#include <cstring>

#include "simulator/Block.h"
#include "simulator/ErrorCode.h"

namespace cvn73100::sim {

Instrument::Instrument(InstrumentConfig config) : config_(std::move(config)), model_(config_.identity) {}

void Instrument::Write(const std::uint8_t* data, std::size_t size, bool end) {
  std::lock_guard lock(mutex_);
  // With the wrong line settings the bytes arrive garbled: the instrument sees nothing it can use.
  if (serial_ && config_.faults.wrongParameter && !LineMatches()) return;
  do {
    const std::size_t used = framer_.Feed(data, size, end);
    data += used;
    size -= used;
    if (framer_.Complete()) {
      HandleMessage();
      framer_.Take();
    }
  } while (size > 0);
}

void Instrument::HandleMessage() {
  if (framer_.Overrun()) {
    model_.ReportInputOverrun();
    return;
  }
  const std::string_view message = framer_.Message();
  if (std::all_of(message.begin(), message.end(), [](char c) { return static_cast<unsigned char>(c) <= 0x20; })) {
    return;  // a stray terminator is no message and interrupts nothing
  }
  if (!stream_ && !output_.empty()) {
    output_.clear();
    model_.Status().Push(kQueryInterrupted);
  }
  model_.SetMessageAvailable(!output_.empty());
  response_.clear();
  if (model_.Execute(message, response_)) Enqueue(response_);
}

void Instrument::Enqueue(std::string& response) {
  const Faults& f = config_.faults;
  if (f.silent) return;
  Reply reply;
  std::size_t blockHeader = 0;
  const auto block = f.dropMidBlock ? Block::Parse(response, &blockHeader) : std::nullopt;
  if (f.garbage) {
    reply.bytes = Garbage();
    reply.bytes += '\n';
  } else if (block) {
    // Cut after half of the data: no terminator and no END follow.
    response.resize(blockHeader - block->size() + block->size() / 2);
    reply.bytes = std::move(response);
    reply.end = false;
  } else {
    response += '\n';
    reply.bytes = std::move(response);
  }
  const Clock::time_point now = Clock::now();
  reply.readyAt = std::max(now + std::chrono::milliseconds(f.lateReplyMs), lineFreeAt_);
  if (f.lineBaud > 0) {
    reply.byteTime = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(10.0 / f.lineBaud));
  }
  lineFreeAt_ = reply.readyAt + reply.byteTime * static_cast<Clock::rep>(reply.bytes.size());
  output_.push_back(std::move(reply));
  readable_.notify_all();
}

std::size_t Instrument::Available(const Reply& reply, Clock::time_point now) {
  if (now < reply.readyAt) return 0;
  const std::size_t size = reply.bytes.size();
  if (reply.byteTime == Clock::duration::zero()) return size - reply.pos;
  const auto sent = static_cast<std::size_t>((now - reply.readyAt) / reply.byteTime);
  return std::min(sent, size) > reply.pos ? std::min(sent, size) - reply.pos : 0;
}

std::size_t Instrument::Read(std::uint8_t* buffer, std::size_t max, std::chrono::milliseconds timeout, bool& end) {
  end = false;
  std::unique_lock lock(mutex_);
  const Clock::time_point deadline = Clock::now() + timeout;
  for (;;) {
    const Clock::time_point now = Clock::now();
    Clock::time_point wake = deadline;
    if (!output_.empty() && max > 0) {
      Reply& reply = output_.front();
      const std::size_t n = std::min(Available(reply, now), max);
      if (n > 0) {
        std::memcpy(buffer, reply.bytes.data() + reply.pos, n);
        reply.pos += n;
        if (reply.pos == reply.bytes.size()) {
          end = reply.end;
          output_.pop_front();
        }
        return n;
      }
      wake = std::min(deadline, reply.readyAt + reply.byteTime * static_cast<Clock::rep>(reply.pos + 1));
    }
    if (now >= deadline) return 0;
    readable_.wait_until(lock, wake);
  }
}

bool Instrument::WaitReadable(std::chrono::milliseconds timeout) {
  std::unique_lock lock(mutex_);
  const Clock::time_point deadline = Clock::now() + timeout;
  for (;;) {
    const Clock::time_point now = Clock::now();
    Clock::time_point wake = deadline;
    if (!output_.empty()) {
      const Reply& reply = output_.front();
      if (Available(reply, now) > 0) return true;
      wake = std::min(deadline, reply.readyAt + reply.byteTime * static_cast<Clock::rep>(reply.pos + 1));
    }
    if (now >= deadline) return false;
    readable_.wait_until(lock, wake);
  }
}

void Instrument::DeviceClear() {
  std::lock_guard lock(mutex_);
  framer_.Reset();
  output_.clear();
  lineFreeAt_ = Clock::time_point{};
}

void Instrument::SetHostLineSettings(int baud, int handshake) {
  std::lock_guard lock(mutex_);
  serial_ = true;
  stream_ = true;
  hostBaud_ = baud;
  hostHandshake_ = handshake;
}

void Instrument::SetStreamOutput(bool stream) {
  std::lock_guard lock(mutex_);
  stream_ = stream;
}

bool Instrument::LineMatches() const {
  const bool hostXon = hostHandshake_ == 2;
  const bool requiredXon = config_.faults.requiredHandshake == 2;
  return hostBaud_ == config_.faults.requiredBaud && hostXon == requiredXon;
}

std::string Instrument::Garbage() {
  // Bytes a wrong baud rate might produce: printable and high bytes, but never a comma or a control code.
  auto next = [this] {
    garbageState_ ^= garbageState_ << 13;
    garbageState_ ^= garbageState_ >> 7;
    garbageState_ ^= garbageState_ << 17;
    return garbageState_;
  };
  std::string bytes(16 + next() % 32, ' ');
  for (char& c : bytes) {
    do {
      c = static_cast<char>(0x20 + next() % (0xFF - 0x20));
    } while (c == ',' || c == 0x7F);
  }
  return bytes;
}

InstrumentConfig Instrument::Config() const {
  std::lock_guard lock(mutex_);
  InstrumentConfig config = config_;
  config.identity = model_.GetIdentity();
  return config;
}

void Instrument::SetFaults(const Faults& faults) {
  std::lock_guard lock(mutex_);
  config_.faults = faults;
}

void Instrument::SetIdentity(const Identity& identity) {
  std::lock_guard lock(mutex_);
  config_.identity = identity;
  model_.SetIdentity(identity);
}

std::uint8_t Instrument::SerialPoll() {
  std::lock_guard lock(mutex_);
  return model_.Status().StatusByte(!output_.empty());
}

ScopeState Instrument::State() const {
  std::lock_guard lock(mutex_);
  return model_.State();
}

void Instrument::SetState(const ScopeState& state) {
  std::lock_guard lock(mutex_);
  model_.SetState(state);
}

RunState Instrument::Running() const {
  std::lock_guard lock(mutex_);
  return model_.Running();
}

std::vector<int> Instrument::Errors() const {
  std::lock_guard lock(mutex_);
  const auto& errors = model_.Status().Errors();
  return {errors.begin(), errors.end()};
}

void Instrument::Send(std::string_view message) {
  Write(reinterpret_cast<const std::uint8_t*>(message.data()), message.size(), true);
}

std::string Instrument::Query(std::string_view message, std::chrono::milliseconds timeout) {
  Send(message);
  const auto deadline = Clock::now() + timeout;
  std::string reply;
  std::uint8_t buffer[4096];
  bool end = false;
  while (!end) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    if (left.count() <= 0) break;
    const std::size_t n = Read(buffer, sizeof buffer, left, end);
    if (n == 0) break;
    reply.append(reinterpret_cast<const char*>(buffer), n);
  }
  if (end && !reply.empty() && reply.back() == '\n') reply.pop_back();
  return reply;
}

}  // namespace cvn73100::sim
