#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "platform/AutomationServer.h"
#include "platform/Event.h"
#include "platform/InstrumentIO.h"
#include "platform/PropertyBag.h"
#include "platform/Variant.h"

namespace cvn73100 {

// The connection to one oscilloscope: owns the automation server, opens and closes it on the
// instrument address, and passes every measurement and data operation through to it.
class CCvn73100EZ {
 public:
  static constexpr const char* DEFAULT_ADDRESS = "GPIB0::7::INSTR";
  static constexpr std::int32_t DEFAULT_TX_DELAY = 50;

  // Creates the server through Components::CreateServer.
  CCvn73100EZ();
  ~CCvn73100EZ();
  CCvn73100EZ(const CCvn73100EZ&) = delete;
  CCvn73100EZ& operator=(const CCvn73100EZ&) = delete;

  const std::string& AutomationServerAddress() const;
  // Closes an open connection first; a COM address must carry "Handshake=" (asserted, stored anyway).
  void SetAutomationServerAddress(const std::string& address);
  std::int32_t TXDelay() const;
  // Raises the invalid-property-value error for a negative delay.
  void SetTXDelay(std::int32_t delay);
  bool ResetOnInitialize() const;
  void SetResetOnInitialize(bool value);
  bool CheckIDOnInitialize() const;
  void SetCheckIDOnInitialize(bool value);
  bool DebugEnabled() const;
  void SetDebugEnabled(bool value);
  bool AmbientUserMode() const;
  void SetAmbientUserMode(bool value);
  bool PropertyPageMode() const;
  void SetPropertyPageMode(bool value);
  bool InstrumentConnected() const;
  // Also handed to the server, which opens its connections through it.
  void SetIOManager(std::shared_ptr<IIOManager> ioManager);
  std::shared_ptr<IIOManager> IOManager() const;
  // The server object itself.
  IAutomationServer& EZPtr();
  std::string ConnectionName();

  // Each connects first when needed (only in user mode), then returns the server's sub-object.
  IAcquisition& Acquisition();
  IAnalogChannels& AnalogChannels();
  ILogicChannel& LogicChannel();
  IMeasure& Measure();
  ITimebase& Timebase();
  ITrigger& Trigger();
  ITrace& Trace();
  IUtilities& Utilities();

  void AutoScale();
  void Digitize();
  void Run();
  void SingleTrigger();
  void StopTrigger();
  void Output(const Variant& outputBuffer);
  // A missing format is "K".
  void Enter(Variant& inputBuffer, const Variant& format = Variant());
  void ReadBytes(std::int32_t& count, Bytes& buffer);
  void WriteBytes(std::int32_t count, Bytes& buffer);
  void GetWaveformData(Cvn73100_AnalogChannels channel, Cvn73100_WaveformPoints points, Variant& time, Variant& data);
  // `data` is erased before the call.
  void GetAllWaveformData(Cvn73100_WaveformPoints points, Variant::Array& data);
  void GetLogicData(Cvn73100_WaveformPoints points, Variant& time, Variant& data);
  Picture GetScreenImage(Cvn73100_ImageFormat format = Cvn73100_ImageFormat_BMP);
  void SaveScreenImage(const std::string& fileName, Cvn73100_ImageFormat format = Cvn73100_ImageFormat_BMP);

  // Opens the connection on the current address. Every failure reaches the caller (the rejected
  // instrument as error 59 over the object-error base); InstrumentConnected is then False and nothing
  // is left open.
  void Initialize();
  // Closes it; with `dropHandshake` the serial lines are held down for TXDelay.
  void CloseConnection(bool dropHandshake = false);
  // "manufacturer,model,serial,firmware" from the server's identity fields.
  std::string IDNQuery();

  void ReadProperties(const PropertyBag& bag);
  void WriteProperties(PropertyBag& bag) const;

  Event<const std::string&> PropertyChanged;
  Event<const std::string&> InstrumentID;

 private:
  void EnsureConnected();
  // Drops the handshake lines and sends a bare CR LF, so a serial instrument starts with an empty input.
  void WakeUpSerialInstrument(IInstrumentIO& channel);

  std::int32_t m_lTXDelay = DEFAULT_TX_DELAY;
  std::unique_ptr<IAutomationServer> m_server;
  bool m_bDebugEnabled = false;
  bool m_bResetOnInitialize = false;
  bool m_bCheckIDOnInitialize = false;
  bool m_bInstrumentConnected = false;
  std::string m_strAutomationServerAddress = DEFAULT_ADDRESS;
  std::string m_strHelpFile = "Cvn73100.hlp";
  bool m_bAmbientUserMode = false;
  bool m_bPropertyPageMode = false;
  std::shared_ptr<IIOManager> m_ioManager;
};

}  // namespace cvn73100
