#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "platform/AutomationServer.h"
#include "server/ScpiChannel.h"
#include "server/ServerUtilities.h"

namespace cvn73100::server {

// The automation server of the 73100 family over the I/O library: one connection (GPIB, or a COM port
// with its line keywords), the setting sub-objects, Utilities, and the data operations. Every operation
// but OpenConnection, CloseConnection and ConnectionName needs an open connection and raises
// SERVERERR_NOT_CONNECTED without one. Errors are ScopeErrors: the server's own (ServerError.h) or the
// I/O library's, passed on unchanged. Not thread-safe; one caller thread.
class Cvn73100Server : public IAutomationServer {
 public:
  explicit Cvn73100Server(std::shared_ptr<IIOManager> ioManager = nullptr);
  ~Cvn73100Server() override;

  // Closes any open connection first. `options` is reserved (0).
  void OpenConnection(const std::string& address, std::int32_t options = 0) override;
  void CloseConnection() override;
  // The address the connection was opened on; "" when closed.
  std::string ConnectionName() override;
  void SetIOManager(std::shared_ptr<IIOManager> ioManager) override;
  std::int32_t Timeout() const override { return m_channel.Timeout(); }
  // Raises SERVERERR_BAD_ARGUMENT for a negative time.
  void SetTimeout(std::int32_t milliseconds) override { m_channel.SetTimeout(milliseconds); }

  IAcquisition& Acquisition() override { return *m_acquisition; }
  IAnalogChannels& AnalogChannels() override { return *m_analogChannels; }
  ILogicChannel& LogicChannel() override { return *m_logicChannel; }
  IMeasure& Measure() override { return *m_measure; }
  ITimebase& Timebase() override { return *m_timebase; }
  ITrigger& Trigger() override { return *m_trigger; }
  ITrace& Trace() override { return *m_trace; }
  IUtilities& Utilities() override { return m_utilities; }

  void AutoScale() override;
  void Digitize() override;
  void Run() override;
  void SingleTrigger() override;
  void StopTrigger() override;
  // A byte array goes out as it is; anything else as text with the output termination.
  void Output(const Variant& outputBuffer) override;
  // "K" (or Empty) reads one reply as a String; "B" reads one definite-length block as a byte array
  // (at most 16 MiB); any other image is handed to the I/O library.
  void Enter(Variant& inputBuffer, const Variant& format) override;
  // 0 <= count <= 16 MiB.
  void ReadBytes(std::int32_t& count, Bytes& buffer) override;
  // 0 <= count <= buffer size.
  void WriteBytes(std::int32_t count, Bytes& buffer) override;
  void GetWaveformData(Cvn73100_AnalogChannels channel, Cvn73100_WaveformPoints points, Variant& time,
                       Variant& data) override;
  void GetAllWaveformData(Cvn73100_WaveformPoints points, Variant::Array& data) override;
  // The 16 bits of pod 1 (D0..D7, low byte) and pod 2 (D8..D15, high byte), one Long per point.
  void GetLogicData(Cvn73100_WaveformPoints points, Variant& time, Variant& data) override;
  // BMP, GIF, TIF or JPG; WMF and EMF are refused with SERVERERR_BAD_ARGUMENT.
  Picture GetScreenImage(Cvn73100_ImageFormat format = Cvn73100_ImageFormat_BMP) override;
  // Writes the image whole or not at all: a temporary file beside `fileName`, then a rename.
  void SaveScreenImage(const std::string& fileName, Cvn73100_ImageFormat format = Cvn73100_ImageFormat_BMP) override;

  // Largest count ReadBytes accepts.
  static constexpr std::int32_t MAX_READ_BYTES = 16 << 20;

 private:
  ScpiChannel m_channel;
  ServerUtilities m_utilities{m_channel};
  std::unique_ptr<IAcquisition> m_acquisition;
  std::unique_ptr<IAnalogChannels> m_analogChannels;
  std::unique_ptr<ILogicChannel> m_logicChannel;
  std::unique_ptr<IMeasure> m_measure;
  std::unique_ptr<ITimebase> m_timebase;
  std::unique_ptr<ITrigger> m_trigger;
  std::unique_ptr<ITrace> m_trace;
};

// Registers this server with Components, so every connection the control creates uses it.
void RegisterAutomationServer();

}  // namespace cvn73100::server
