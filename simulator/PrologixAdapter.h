#pragma once

#include <array>
#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>

#include "simulator/ByteDevice.h"
#include "simulator/Instrument.h"

namespace cvn73100::sim {

// A Prologix-style GPIB controller (the USB model on a serial line, the Ethernet model on TCP) with instruments
// at GPIB addresses behind it. Host lines end at an unescaped CR or LF; a line starting with "++" is an adapter
// command, any other line goes to the instrument at ++addr with ESC-escaped bytes taken literally, the ++eos
// terminator appended and END on the last byte when ++eoi is 1. Instrument bytes come back unchanged.
class PrologixAdapter : public ByteDevice {
 public:
  enum class Model { Usb, Ethernet };
  explicit PrologixAdapter(Model model);

  // Puts `instrument` at GPIB primary address 0..30 (it must outlive the adapter). The first attached
  // instrument's address becomes the adapter's ++addr.
  void Attach(int address, Instrument& instrument);

  void Receive(const std::uint8_t* data, std::size_t size) override;
  std::size_t Send(std::uint8_t* buffer, std::size_t max, std::chrono::milliseconds timeout) override;

  std::string Version() const;

 private:
  enum class ReadUntil { Timeout, Eoi, Character };
  void HandleLine();
  void Command(std::string_view line);
  void ToInstrument(std::string_view data);
  void ReadInstrument(ReadUntil until, int character);
  void Reply(std::string_view text);
  void ResetSettings();
  Instrument* Current() const { return instruments_[static_cast<std::size_t>(address_)]; }

  Model model_;
  std::array<Instrument*, 31> instruments_{};
  bool attached_ = false;
  // Host input: the line being assembled and whether its first two bytes arrived unescaped.
  std::string line_;
  bool escape_ = false;
  bool unescapedStart_[2] = {false, false};
  bool discarding_ = false;
  // Adapter settings (++mode, ++addr, ...), factory defaults after ++rst.
  int mode_ = 1, address_ = 0, secondary_ = -1, eos_ = 0, eotChar_ = 0, readTimeoutMs_ = 500;
  bool auto_ = false, eoi_ = true, eotEnable_ = false, saveConfig_ = true;
  // Bytes for the host.
  std::mutex mutex_;
  std::condition_variable ready_;
  std::string out_;
  std::size_t outPos_ = 0;
};

}  // namespace cvn73100::sim
