#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/Enumerations.h"
#include "platform/InstrumentIO.h"
#include "platform/Variant.h"

namespace cvn73100 {

// A screen image as the instrument sent it.
struct Picture {
  Cvn73100_ImageFormat format = Cvn73100_ImageFormat_BMP;
  std::string mimeType;  // "image/bmp", ...
  Bytes data;            // the encoded file
  std::int32_t width = 0;
  std::int32_t height = 0;
};

class IAcquisition {
 public:
  virtual ~IAcquisition() = default;
  virtual Cvn73100_AcquisitionType Type() = 0;
  virtual void SetType(Cvn73100_AcquisitionType type) = 0;
  virtual Cvn73100_AcquisitionCount Count() = 0;
  virtual void SetCount(Cvn73100_AcquisitionCount count) = 0;
};

class IAnalogChannels {
 public:
  virtual ~IAnalogChannels() = default;
  virtual Cvn73100_OnOffState Display(Cvn73100_AnalogChannels channel) = 0;
  virtual void SetDisplay(Cvn73100_AnalogChannels channel, Cvn73100_OnOffState state) = 0;
  virtual Cvn73100_ProbeCoupling Coupling(Cvn73100_AnalogChannels channel) = 0;
  virtual void SetCoupling(Cvn73100_AnalogChannels channel, Cvn73100_ProbeCoupling coupling) = 0;
  virtual Cvn73100_ProbeAttenuation ProbeAttenuation(Cvn73100_AnalogChannels channel) = 0;
  virtual void SetProbeAttenuation(Cvn73100_AnalogChannels channel, Cvn73100_ProbeAttenuation attenuation) = 0;
  virtual double Range(Cvn73100_AnalogChannels channel) = 0;  // volts, full screen
  virtual void SetRange(Cvn73100_AnalogChannels channel, double volts) = 0;
  virtual double Offset(Cvn73100_AnalogChannels channel) = 0;  // volts
  virtual void SetOffset(Cvn73100_AnalogChannels channel, double volts) = 0;
};

class ILogicChannel {
 public:
  virtual ~ILogicChannel() = default;
  virtual Cvn73100_OnOffState Display(Cvn73100_LogicBits bit) = 0;
  virtual void SetDisplay(Cvn73100_LogicBits bit, Cvn73100_OnOffState state) = 0;
};

class IMeasure {
 public:
  virtual ~IMeasure() = default;
  virtual double Frequency(Cvn73100_AnalogChannels channel) = 0;  // hertz
  virtual double VPP(Cvn73100_AnalogChannels channel) = 0;        // volts peak to peak
  virtual double VAverage(Cvn73100_AnalogChannels channel) = 0;   // volts
};

class ITimebase {
 public:
  virtual ~ITimebase() = default;
  virtual Cvn73100_TimeMode Mode() = 0;
  virtual void SetMode(Cvn73100_TimeMode mode) = 0;
  virtual double Range() = 0;  // seconds, full screen
  virtual void SetRange(double seconds) = 0;
  virtual double Delay() = 0;  // seconds
  virtual void SetDelay(double seconds) = 0;
  virtual Cvn73100_TimeReference Reference() = 0;
  virtual void SetReference(Cvn73100_TimeReference reference) = 0;
};

class ITrigger {
 public:
  virtual ~ITrigger() = default;
  virtual Cvn73100_TriggerMode Mode() = 0;
  virtual void SetMode(Cvn73100_TriggerMode mode) = 0;
  virtual Cvn73100_TriggerSource Source() = 0;
  virtual void SetSource(Cvn73100_TriggerSource source) = 0;
  virtual Cvn73100_TriggerSlope Slope() = 0;
  virtual void SetSlope(Cvn73100_TriggerSlope slope) = 0;
  virtual double Level() = 0;  // volts
  virtual void SetLevel(double volts) = 0;
  virtual Cvn73100_TriggerCoupling Coupling() = 0;
  virtual void SetCoupling(Cvn73100_TriggerCoupling coupling) = 0;
};

// Which traces the display shows, by the combined channel numbering.
class ITrace {
 public:
  virtual ~ITrace() = default;
  virtual Cvn73100_OnOffState Display(Cvn73100_AllChannels channel) = 0;
  virtual void SetDisplay(Cvn73100_AllChannels channel, Cvn73100_OnOffState state) = 0;
};

class IUtilities {
 public:
  virtual ~IUtilities() = default;
  // The four fields of the identification reply, in order.
  virtual std::string Manufacturer() = 0;
  virtual std::string Model() = 0;
  virtual std::string SerialNumber() = 0;
  virtual std::string FirmwareVersion() = 0;
  virtual void ResetInstrument() = 0;
  // True when the connected instrument is one of the supported models (the arguments are reserved, pass 0).
  virtual bool CheckInstrumentID(std::int32_t reserved1 = 0, std::int32_t reserved2 = 0,
                                 std::int32_t reserved3 = 0) = 0;
  // The raw I/O channel the server uses; raises when there is none.
  virtual std::shared_ptr<IInstrumentIO> IOChannel() = 0;
  virtual LearnString ReadStateData() = 0;
  virtual void WriteStateData(const LearnString& learnString) = 0;
  virtual std::string InstrumentModel() = 0;
  virtual std::string InstrumentFirmwareVersion() = 0;
  // The instrument's oldest queued error as "<code>,<text>"; "" when the queue is empty.
  virtual std::string QueryInstrumentError() = 0;
  // Every queued error, oldest first, each as "<code>,<text>"; the queue is empty afterwards.
  virtual std::vector<std::string> DrainInstrumentErrors() = 0;
};

// The automation server of the 73100 family: one connection, its sub-objects and its operations.
class IAutomationServer {
 public:
  virtual ~IAutomationServer() = default;

  // The connection interface.
  virtual void OpenConnection(const std::string& address, std::int32_t options = 0) = 0;
  virtual void CloseConnection() = 0;
  virtual std::string ConnectionName() = 0;
  // The I/O library's manager the server opens its connections through. The owner may hand it over
  // after creating the server; an open connection keeps the channel it has.
  // A sink: the server keeps the manager (taken by value and moved); one without connections ignores it.
  // NOLINTNEXTLINE(performance-unnecessary-value-param)
  virtual void SetIOManager(std::shared_ptr<IIOManager> /*ioManager*/) {}
  // The reply time limit of each read in milliseconds; it holds for the open connection and for later ones.
  virtual std::int32_t Timeout() const = 0;
  virtual void SetTimeout(std::int32_t milliseconds) = 0;

  virtual IAcquisition& Acquisition() = 0;
  virtual IAnalogChannels& AnalogChannels() = 0;
  virtual ILogicChannel& LogicChannel() = 0;
  virtual IMeasure& Measure() = 0;
  virtual ITimebase& Timebase() = 0;
  virtual ITrigger& Trigger() = 0;
  virtual ITrace& Trace() = 0;
  virtual IUtilities& Utilities() = 0;

  virtual void AutoScale() = 0;
  virtual void Digitize() = 0;
  virtual void Run() = 0;
  virtual void SingleTrigger() = 0;
  virtual void StopTrigger() = 0;
  // Sends a command or data (a String, or a byte array sent as it is).
  virtual void Output(const Variant& outputBuffer) = 0;
  // Reads one reply into `inputBuffer` by `format` ("K": a String).
  virtual void Enter(Variant& inputBuffer, const Variant& format) = 0;
  // Reads `count` bytes; `count` is replaced by the number read.
  virtual void ReadBytes(std::int32_t& count, Bytes& buffer) = 0;
  virtual void WriteBytes(std::int32_t count, Bytes& buffer) = 0;
  // Times in seconds and values in volts (DoubleArray variants) of one analog channel.
  virtual void GetWaveformData(Cvn73100_AnalogChannels channel, Cvn73100_WaveformPoints points, Variant& time,
                               Variant& data) = 0;
  // One entry per analog channel: an Array variant of (time, data) pairs.
  virtual void GetAllWaveformData(Cvn73100_WaveformPoints points, Variant::Array& data) = 0;
  // Times in seconds and the 16 logic bits as a Long per point.
  virtual void GetLogicData(Cvn73100_WaveformPoints points, Variant& time, Variant& data) = 0;
  virtual Picture GetScreenImage(Cvn73100_ImageFormat format = Cvn73100_ImageFormat_BMP) = 0;
  virtual void SaveScreenImage(const std::string& fileName, Cvn73100_ImageFormat format = Cvn73100_ImageFormat_BMP) = 0;
};

}  // namespace cvn73100
