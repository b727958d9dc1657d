#pragma once

#include <cstdint>
#include <deque>

namespace cvn73100::sim {

// The IEEE 488.2 status model: the error queue, the standard event status register with its enable mask,
// and the status byte built from them.
class StatusRegisters {
 public:
  static constexpr std::size_t kQueueDepth = 30;
  // Standard event status bits.
  static constexpr std::uint8_t kOperationComplete = 0x01, kQueryError = 0x04, kDeviceError = 0x08,
                                kExecutionError = 0x10, kCommandError = 0x20, kPowerOn = 0x80;
  // Status byte bits.
  static constexpr std::uint8_t kErrorAvailable = 0x04, kMessageAvailable = 0x10, kEventSummary = 0x20,
                                kMasterSummary = 0x40;

  // Queues an error and sets its event bit; a full queue keeps its oldest entries and ends in -350.
  void Push(int code);
  // Removes the oldest error; 0 when the queue is empty.
  int Pop();
  const std::deque<int>& Errors() const { return errors_; }
  void SetEvent(std::uint8_t bits) { esr_ |= bits; }
  // *ESR? reads and clears the event register.
  std::uint8_t TakeEventRegister();
  void SetEventEnable(std::uint8_t mask) { ese_ = mask; }
  std::uint8_t EventEnable() const { return ese_; }
  void SetServiceRequestEnable(std::uint8_t mask) { sre_ = mask; }
  std::uint8_t ServiceRequestEnable() const { return sre_; }
  std::uint8_t StatusByte(bool messageAvailable) const;
  // *CLS: empties the queue and the event register, keeps the enable masks.
  void Clear();

 private:
  std::deque<int> errors_;
  std::uint8_t esr_ = kPowerOn;
  std::uint8_t ese_ = 0;
  std::uint8_t sre_ = 0;
};

}  // namespace cvn73100::sim
