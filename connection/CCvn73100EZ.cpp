#include "connection/CCvn73100EZ.h"

#include <algorithm>
#include <cctype>
#include <string_view>

#include "connection/CQueryInstrument.h"
#include "diagnostics/CDebug.h"
#include "dialogs/Messages.h"
#include "platform/Components.h"

namespace cvn73100 {
namespace {

constexpr const char* CLASS_NAME = "CCvn73100EZ";
constexpr std::string_view RS232_PREFIX = "COM";
constexpr std::string_view HANDSHAKE_ADDRESS_KEYWORD = "Handshake=";
constexpr const char* SERIAL_IO_TYPE = "ASRL";
constexpr const char* CRLF = "\r\n";
// Messages of the failed-connection error.
constexpr int MSG_CONTROL_NAME = 104;
constexpr int MSG_CONNECTION_FAILED = 113;
constexpr int MSG_IO_INITIALIZATION = 114;
constexpr int MSG_RETEST = 115;
// The automation host's "object variable not set", for a connection that was never given an I/O manager.
constexpr std::int32_t ERR_OBJECT_NOT_SET = 91;

bool EqualNoCase(char a, char b) {
  return std::toupper(static_cast<unsigned char>(a)) == std::toupper(static_cast<unsigned char>(b));
}

bool StartsWithNoCase(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), text.begin(), EqualNoCase);
}

bool ContainsNoCase(std::string_view text, std::string_view word) {
  return std::search(text.begin(), text.end(), word.begin(), word.end(), EqualNoCase) != text.end();
}

bool IsSerialAddress(std::string_view address) { return StartsWithNoCase(address, RS232_PREFIX); }

ScopeError ConnectionError() {
  const std::string description = Messages::Load(MSG_CONNECTION_FAILED) + CRLF + Messages::Load(MSG_IO_INITIALIZATION) +
                                  CRLF + CRLF + Messages::Load(MSG_RETEST);
  return ScopeError(ObjectError(ERR_FAILED_CONNECTION), Messages::Load(MSG_CONTROL_NAME), description);
}

}  // namespace

CCvn73100EZ::CCvn73100EZ() : m_server(Components::CreateServer(nullptr)) {}

CCvn73100EZ::~CCvn73100EZ() {
  try {
    CloseConnection(false);
  } catch (const std::exception&) {
    // Nothing can be reported from a destructor; the server closes its channel when it goes.
  }
}

const std::string& CCvn73100EZ::AutomationServerAddress() const { return m_strAutomationServerAddress; }

void CCvn73100EZ::SetAutomationServerAddress(const std::string& address) {
  if (address == m_strAutomationServerAddress) return;
  if (m_bInstrumentConnected) CloseConnection(false);
  if (IsSerialAddress(address)) {
    CDebug::Instance().Assert(ContainsNoCase(address, HANDSHAKE_ADDRESS_KEYWORD),
                              "(InStr(1, strAddress, HANDSHAKE_ADDRESS_KEYWORD, vbTextCompare) > 0)", CLASS_NAME,
                              "AutomationServerAddress", "1");
  }
  m_strAutomationServerAddress = address;
}

std::int32_t CCvn73100EZ::TXDelay() const { return m_lTXDelay; }

void CCvn73100EZ::SetTXDelay(std::int32_t delay) {
  if (delay >= 0) {
    if (delay == m_lTXDelay) return;
    m_lTXDelay = delay;
    PropertyChanged.Raise("TXDelay");
  } else {
    CDebug::Instance().Assert(false, "false", CLASS_NAME, "Let TXDelay", "Else");
    throw InvalidPropertyValue();
  }
}

bool CCvn73100EZ::ResetOnInitialize() const { return m_bResetOnInitialize; }

void CCvn73100EZ::SetResetOnInitialize(bool value) {
  if (value == m_bResetOnInitialize) return;
  m_bResetOnInitialize = value;
  PropertyChanged.Raise("ResetOnInitialize");
}

bool CCvn73100EZ::CheckIDOnInitialize() const { return m_bCheckIDOnInitialize; }

void CCvn73100EZ::SetCheckIDOnInitialize(bool value) {
  if (value == m_bCheckIDOnInitialize) return;
  m_bCheckIDOnInitialize = value;
  PropertyChanged.Raise("CheckIDOnInitialize");
}

bool CCvn73100EZ::DebugEnabled() const { return m_bDebugEnabled; }
void CCvn73100EZ::SetDebugEnabled(bool value) { m_bDebugEnabled = value; }
bool CCvn73100EZ::AmbientUserMode() const { return m_bAmbientUserMode; }
void CCvn73100EZ::SetAmbientUserMode(bool value) { m_bAmbientUserMode = value; }
bool CCvn73100EZ::PropertyPageMode() const { return m_bPropertyPageMode; }
void CCvn73100EZ::SetPropertyPageMode(bool value) { m_bPropertyPageMode = value; }
bool CCvn73100EZ::InstrumentConnected() const { return m_bInstrumentConnected; }

void CCvn73100EZ::SetIOManager(std::shared_ptr<IIOManager> ioManager) {
  m_ioManager = std::move(ioManager);
  m_server->SetIOManager(m_ioManager);
}

std::shared_ptr<IIOManager> CCvn73100EZ::IOManager() const { return m_ioManager; }
IAutomationServer& CCvn73100EZ::EZPtr() { return *m_server; }
std::string CCvn73100EZ::ConnectionName() { return m_server->ConnectionName(); }

void CCvn73100EZ::EnsureConnected() {
  if (m_bInstrumentConnected) return;
  // Outside user mode (a form designer) nothing opens a connection behind the user's back.
  if (!m_bAmbientUserMode) return;
  Initialize();
}

IAcquisition& CCvn73100EZ::Acquisition() {
  EnsureConnected();
  return m_server->Acquisition();
}

IAnalogChannels& CCvn73100EZ::AnalogChannels() {
  EnsureConnected();
  return m_server->AnalogChannels();
}

ILogicChannel& CCvn73100EZ::LogicChannel() {
  EnsureConnected();
  return m_server->LogicChannel();
}

IMeasure& CCvn73100EZ::Measure() {
  EnsureConnected();
  return m_server->Measure();
}

ITimebase& CCvn73100EZ::Timebase() {
  EnsureConnected();
  return m_server->Timebase();
}

ITrigger& CCvn73100EZ::Trigger() {
  EnsureConnected();
  return m_server->Trigger();
}

ITrace& CCvn73100EZ::Trace() {
  EnsureConnected();
  return m_server->Trace();
}

IUtilities& CCvn73100EZ::Utilities() {
  EnsureConnected();
  return m_server->Utilities();
}

void CCvn73100EZ::AutoScale() {
  EnsureConnected();
  m_server->AutoScale();
}

void CCvn73100EZ::Digitize() {
  EnsureConnected();
  m_server->Digitize();
}

void CCvn73100EZ::Run() {
  EnsureConnected();
  m_server->Run();
}

void CCvn73100EZ::SingleTrigger() {
  EnsureConnected();
  m_server->SingleTrigger();
}

void CCvn73100EZ::StopTrigger() {
  EnsureConnected();
  m_server->StopTrigger();
}

void CCvn73100EZ::Output(const Variant& outputBuffer) {
  EnsureConnected();
  m_server->Output(outputBuffer);
}

void CCvn73100EZ::Enter(Variant& inputBuffer, const Variant& format) {
  EnsureConnected();
  m_server->Enter(inputBuffer, format.IsEmpty() ? Variant("K") : format);
}

void CCvn73100EZ::ReadBytes(std::int32_t& count, Bytes& buffer) {
  EnsureConnected();
  m_server->ReadBytes(count, buffer);
}

void CCvn73100EZ::WriteBytes(std::int32_t count, Bytes& buffer) {
  EnsureConnected();
  m_server->WriteBytes(count, buffer);
}

void CCvn73100EZ::GetWaveformData(Cvn73100_AnalogChannels channel, Cvn73100_WaveformPoints points, Variant& time,
                                  Variant& data) {
  EnsureConnected();
  m_server->GetWaveformData(channel, points, time, data);
}

void CCvn73100EZ::GetAllWaveformData(Cvn73100_WaveformPoints points, Variant::Array& data) {
  EnsureConnected();
  data.clear();
  m_server->GetAllWaveformData(points, data);
}

void CCvn73100EZ::GetLogicData(Cvn73100_WaveformPoints points, Variant& time, Variant& data) {
  EnsureConnected();
  m_server->GetLogicData(points, time, data);
}

Picture CCvn73100EZ::GetScreenImage(Cvn73100_ImageFormat format) {
  EnsureConnected();
  return m_server->GetScreenImage(format);
}

void CCvn73100EZ::SaveScreenImage(const std::string& fileName, Cvn73100_ImageFormat format) {
  EnsureConnected();
  m_server->SaveScreenImage(fileName, format);
}

void CCvn73100EZ::WakeUpSerialInstrument(IInstrumentIO& channel) {
  CQueryInstrument::DropHandshake(channel, m_lTXDelay, true);
  const std::int16_t termination = channel.OutputTermination();
  channel.SetOutputTermination(0);
  channel.Output(CRLF);
  channel.SetOutputTermination(termination);
}

// Failures reach the caller: a host that calls Initialize must learn why it did not connect. Whatever
// fails, the connection is closed again, so InstrumentConnected is False and no port stays open.
void CCvn73100EZ::Initialize() {
  CloseConnection(false);
  std::shared_ptr<IInstrumentIO> channel;
  try {
    if (!m_ioManager) throw ScopeError(ERR_OBJECT_NOT_SET, "Cvn73100CtrlLib", "Object variable not set (IOManager)");
    const std::string& address = m_strAutomationServerAddress;
    channel = m_ioManager->Open(address);
    if (IsSerialAddress(address)) WakeUpSerialInstrument(*channel);
    channel->Clear();
    channel->Port().Close();
    channel.reset();

    m_server->OpenConnection(address, 0);
    // Only proves that the server answers.
    (void)m_server->Utilities().Model();
    if (!m_bPropertyPageMode) InstrumentID.Raise(IDNQuery());
    if (m_bResetOnInitialize) m_server->Utilities().ResetInstrument();
    if (m_bCheckIDOnInitialize && !m_server->Utilities().CheckInstrumentID(0, 0, 0)) {
      CloseConnection(false);
      const ScopeError error = ConnectionError();
      CDebug::Instance().Message(error.Number(), error.Description(), CLASS_NAME, "Initialize", "ErrorHandler");
      throw error;
    }
    m_bInstrumentConnected = true;
  } catch (const std::exception&) {
    m_bInstrumentConnected = false;
    try {
      if (channel) channel->Port().Close();
      m_server->CloseConnection();
    } catch (const std::exception&) {
      // The original failure is the one the caller needs to see.
    }
    throw;
  }
}

void CCvn73100EZ::CloseConnection(bool dropHandshake) {
  std::shared_ptr<IInstrumentIO> channel;
  try {
    channel = m_server->Utilities().IOChannel();
  } catch (const std::exception&) {
    // No channel in use: nothing to drop.
  }
  if (channel && channel->IOType() == SERIAL_IO_TYPE) {
    CQueryInstrument::DropHandshake(*channel, dropHandshake ? m_lTXDelay : 0, false);
  }
  channel.reset();
  if (m_server) m_server->CloseConnection();
  m_bInstrumentConnected = false;
}

std::string CCvn73100EZ::IDNQuery() {
  std::string idn = m_server->Utilities().Manufacturer();
  idn += "," + m_server->Utilities().Model();
  idn += "," + m_server->Utilities().SerialNumber();
  idn += "," + m_server->Utilities().FirmwareVersion();
  return idn;
}

void CCvn73100EZ::ReadProperties(const PropertyBag& bag) {
  const std::int32_t delay = bag.ReadLong("TXDelay", DEFAULT_TX_DELAY);
  const bool reset = bag.ReadBoolean("ResetOnIntialize", false);
  const bool checkID = bag.ReadBoolean("CheckIDOnIntialize", false);
  if (delay < 0) {
    CDebug::Instance().Assert(false, "false", CLASS_NAME, "ReadProperties", "1");
    throw InvalidPropertyValue();
  }
  m_lTXDelay = delay;
  m_bResetOnInitialize = reset;
  m_bCheckIDOnInitialize = checkID;
}

// The two Boolean keys lack the second "i" of "Initialize": saved forms carry them so.
void CCvn73100EZ::WriteProperties(PropertyBag& bag) const {
  bag.WriteProperty("TXDelay", Variant(m_lTXDelay), Variant(DEFAULT_TX_DELAY));
  bag.WriteProperty("ResetOnIntialize", Variant(m_bResetOnInitialize), Variant(false));
  bag.WriteProperty("CheckIDOnIntialize", Variant(m_bCheckIDOnInitialize), Variant(false));
}

}  // namespace cvn73100
