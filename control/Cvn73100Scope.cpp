#include "control/Cvn73100Scope.h"

#include <utility>

#include "connection/CCvn73100EZ.h"
#include "diagnostics/CDebug.h"
#include "dialogs/FrmAbout.h"
#include "dialogs/LanguageSelection.h"
#include "dialogs/Messages.h"
#include "ioconfig/CIOconfiguration.h"
#include "platform/Components.h"
#include "platform/Host.h"
#include "platform/ScopeError.h"
#include "setups/SetupsCvn73100Scope.h"

#ifndef CVN73100_VERSION
#define CVN73100_VERSION "1.0.0"
#endif

namespace cvn73100 {
namespace {

constexpr const char* HELP_FILE_NAME = "Cvn73100.hlp";
constexpr int MSG_CONTROL_NAME = 104;
constexpr int MSG_ASIAN_LANGUAGES = 107;

// While it lives, the control's property changes are not announced.
class Loading {
 public:
  explicit Loading(int& counter) : m_counter(counter) { ++m_counter; }
  ~Loading() { --m_counter; }
  Loading(const Loading&) = delete;
  Loading& operator=(const Loading&) = delete;

 private:
  int& m_counter;
};

}  // namespace

Cvn73100Scope::Cvn73100Scope() {
  Loading loading(m_iLoading);
  m_strHelpFile = HELP_FILE_NAME;

  m_debug = std::make_shared<CDebug>();
  CDebug::SetInstance(m_debug);
  WithoutFatalLog([this] {
    m_debug->SetMode(CDebug::MODE_LOG);
    m_debug->Trace("UserControl_Initialize", CLASS_NAME, "", "");
  });

  m_ccvn73100ez = std::make_shared<CCvn73100EZ>();
  m_cioconfiguration = std::make_shared<CIOconfiguration>();
  InitProperties();

  m_ioManager = Components::CreateIOManager();
  m_ccvn73100ez->SetIOManager(m_ioManager);

  while (m_setups->Count() > 0) m_setups->Remove(1);
  m_astrPropertyPages = AllPages();
  // Last, so that a construction that fails leaves no handler behind on the process-wide CDebug.
  ConnectEvents();
}

Cvn73100Scope::~Cvn73100Scope() {
  try {
    Terminate();
  } catch (const std::exception&) {
    // Removing a setup cannot fail for a position that exists; nothing could be reported here anyway.
  }
  for (auto& connection : m_eventConnections) connection.Disconnect();
}

void Cvn73100Scope::ConnectEvents() {
  m_eventConnections.push_back(
      m_debug->SupportMessage.Connect([this](const std::string& message) { SupportMessage.Raise(message); }));
  m_eventConnections.push_back(m_debug->PropertyChanged.Connect([this](const std::string& name) { Announce(name); }));
  m_eventConnections.push_back(
      m_ccvn73100ez->PropertyChanged.Connect([this](const std::string& name) { Announce(name); }));
  m_eventConnections.push_back(
      m_ccvn73100ez->InstrumentID.Connect([this](const std::string& id) { OnInstrumentID(id); }));
}

void Cvn73100Scope::Announce(const std::string& name) const {
  if (m_iLoading == 0) Host::Current().PropertyChanged(name);
}

void Cvn73100Scope::PassAddressToConnection() {
  m_ccvn73100ez->SetAutomationServerAddress(m_cioconfiguration->ActiveAutomationServerAddress());
}

void Cvn73100Scope::OnInstrumentID(const std::string& id) {
  if (id != AddressInstrumentID()) SetAddressInstrumentID(id);
}

// --- The public interface. ---

void Cvn73100Scope::SetCountryCode(std::int32_t countryCode) {
  // Selecting the language again is not skipped: the catalogue's language is process-wide, and another
  // control may have changed it since.
  const LanguageChoice choice = LanguageSelection::Select(countryCode);
  SetFontName(choice.fontName);
  SetFontSize(choice.fontSize);
  if (choice.countryCode == m_lCountryCode) return;
  m_lCountryCode = choice.countryCode;
  Announce("CountryCode");
}

const std::string& Cvn73100Scope::AddressInstrumentID() const {
  return m_cioconfiguration->ActiveAddressInstrumentID();
}

void Cvn73100Scope::SetAddressInstrumentID(const std::string& value) {
  if (value == AddressInstrumentID()) return;
  m_cioconfiguration->SetActiveAddressInstrumentID(value);
  Announce("AddressInstrumentID");
}

Variant Cvn73100Scope::SearchCriteria() const { return m_cioconfiguration->DataAsVariant(); }

void Cvn73100Scope::SetSearchCriteria(const Variant& value) {
  if (value == SearchCriteria()) return;
  m_cioconfiguration->SetDataAsVariant(value);
  Announce("SearchCriteria");
}

const std::string& Cvn73100Scope::Address() const { return m_cioconfiguration->ActiveAddressString(); }

void Cvn73100Scope::SetAddress(const std::string& address) {
  if (address == Address()) return;
  const std::string previous = Address();
  m_cioconfiguration->SetActiveAddressString(address);
  // Another spelling of the same address ("gpib0::7::instr") names the same instrument.
  if (Address() == previous) return;
  PassAddressToConnection();
  SetAddressInstrumentID("");
  Announce("Address");
}

void Cvn73100Scope::Initialize() { m_ccvn73100ez->Initialize(); }

void Cvn73100Scope::CloseConnection() { m_ccvn73100ez->CloseConnection(false); }

std::vector<std::string> Cvn73100Scope::AllPages() const {
  return {PAGE_SEARCH_IO, PAGE_SEARCH_CRITERIA, PAGE_SET_IO, PAGE_SETUPS};
}

// Offers `pages` while the host shows them, then the full list again (also when the host fails).
void Cvn73100Scope::ShowPages(const std::vector<std::string>& pages, int initialPage) {
  m_astrPropertyPages = pages;
  try {
    Host::Current().ShowPropertyPages(m_astrPropertyPages, initialPage);
  } catch (...) {
    m_astrPropertyPages = AllPages();
    throw;
  }
  m_astrPropertyPages = AllPages();
}

void Cvn73100Scope::ShowPropertyPages(std::int16_t pages) {
  switch (pages) {
    case Cvn73100_ShowPropertyPage_Default:
      ShowPages(AllPages(), 0);
      break;
    case Cvn73100_ShowPropertyPage_Setups:
      ShowPages(AllPages(), 3);
      break;
    case Cvn73100_ShowPropertyPage_Search:
      ShowPages({PAGE_SEARCH_IO, PAGE_SEARCH_CRITERIA}, 0);
      break;
    case Cvn73100_ShowPropertyPage_SetIO:
      // The two pages that edit the I/O configuration by hand.
      ShowPages({PAGE_SEARCH_CRITERIA, PAGE_SET_IO}, 1);
      break;
    default:
      m_debug->Assert(false, "False", CLASS_NAME, "ShowPropertyPages", "Case Else");
      // Message 107 (not 106) is the description hosts have always received here.
      throw CatalogueError(ERR_INVALID_PROPERTY_VALUE, MSG_CONTROL_NAME, MSG_ASIAN_LANGUAGES);
  }
}

std::int32_t Cvn73100Scope::TXDelay() const { return m_ccvn73100ez->TXDelay(); }
void Cvn73100Scope::SetTXDelay(std::int32_t delay) { m_ccvn73100ez->SetTXDelay(delay); }

void Cvn73100Scope::SetFontName(const std::string& fontName) {
  if (fontName == m_strFontName) return;
  m_strFontName = fontName;
  Announce("FontName");
}

void Cvn73100Scope::SetFontSize(std::int16_t fontSize) {
  if (fontSize == m_iFontSize) return;
  m_iFontSize = fontSize;
  Announce("FontSize");
}

void Cvn73100Scope::AboutBox() {
  const FrmAbout about(Version());
  Host::Current().ShowAboutBox(about.Caption(), about.Lines());
}

IAcquisition& Cvn73100Scope::Acquisition() { return m_ccvn73100ez->Acquisition(); }
IAnalogChannels& Cvn73100Scope::AnalogChannels() { return m_ccvn73100ez->AnalogChannels(); }
ILogicChannel& Cvn73100Scope::LogicChannel() { return m_ccvn73100ez->LogicChannel(); }
IMeasure& Cvn73100Scope::Measure() { return m_ccvn73100ez->Measure(); }
ITimebase& Cvn73100Scope::Timebase() { return m_ccvn73100ez->Timebase(); }
ITrigger& Cvn73100Scope::Trigger() { return m_ccvn73100ez->Trigger(); }
ITrace& Cvn73100Scope::Trace() { return m_ccvn73100ez->Trace(); }
IUtilities& Cvn73100Scope::Utilities() { return m_ccvn73100ez->Utilities(); }
std::string Cvn73100Scope::ConnectionName() { return m_ccvn73100ez->ConnectionName(); }

void Cvn73100Scope::AutoScale() { m_ccvn73100ez->AutoScale(); }
void Cvn73100Scope::Digitize() { m_ccvn73100ez->Digitize(); }
void Cvn73100Scope::Run() { m_ccvn73100ez->Run(); }
void Cvn73100Scope::SingleTrigger() { m_ccvn73100ez->SingleTrigger(); }
void Cvn73100Scope::StopTrigger() { m_ccvn73100ez->StopTrigger(); }
void Cvn73100Scope::Enter(Variant& inputBuffer, const Variant& format) { m_ccvn73100ez->Enter(inputBuffer, format); }

void Cvn73100Scope::GetLogicData(Cvn73100_WaveformPoints points, Variant& time, Variant& data) {
  m_ccvn73100ez->GetLogicData(points, time, data);
}

Picture Cvn73100Scope::GetScreenImage(Cvn73100_ImageFormat format) { return m_ccvn73100ez->GetScreenImage(format); }

void Cvn73100Scope::GetWaveformData(Cvn73100_AnalogChannels channel, Cvn73100_WaveformPoints points, Variant& time,
                                    Variant& data) {
  m_ccvn73100ez->GetWaveformData(channel, points, time, data);
}

void Cvn73100Scope::GetAllWaveformData(Cvn73100_WaveformPoints points, Variant::Array& data) {
  m_ccvn73100ez->GetAllWaveformData(points, data);
}

void Cvn73100Scope::Output(const Variant& outputBuffer) { m_ccvn73100ez->Output(outputBuffer); }
void Cvn73100Scope::ReadBytes(std::int32_t& count, Bytes& buffer) { m_ccvn73100ez->ReadBytes(count, buffer); }

void Cvn73100Scope::SaveScreenImage(const std::string& fileName, Cvn73100_ImageFormat format) {
  m_ccvn73100ez->SaveScreenImage(fileName, format);
}

void Cvn73100Scope::WriteBytes(std::int32_t count, Bytes& buffer) { m_ccvn73100ez->WriteBytes(count, buffer); }

std::int32_t Cvn73100Scope::SupportMessageMode() const { return m_debug->Mode(); }
void Cvn73100Scope::SetSupportMessageMode(std::int32_t mode) { m_debug->SetMode(mode); }
bool Cvn73100Scope::InstrumentConnected() const { return m_ccvn73100ez->InstrumentConnected(); }
bool Cvn73100Scope::ResetOnInitialize() const { return m_ccvn73100ez->ResetOnInitialize(); }
// The connection announces the change itself, under the same name.
void Cvn73100Scope::SetResetOnInitialize(bool value) { m_ccvn73100ez->SetResetOnInitialize(value); }
bool Cvn73100Scope::CheckIDOnInitialize() const { return m_ccvn73100ez->CheckIDOnInitialize(); }
void Cvn73100Scope::SetCheckIDOnInitialize(bool value) { m_ccvn73100ez->SetCheckIDOnInitialize(value); }

std::string Cvn73100Scope::AutomationServerAddress() const {
  return m_cioconfiguration->ActiveAutomationServerAddress();
}

// --- The host's side. ---

void Cvn73100Scope::InitProperties() {
  Loading loading(m_iLoading);
  m_strFontName = DEFAULT_FONT_NAME;
  m_cioconfiguration->SetActiveAddressString(DEFAULT_ADDRESS);
  PassAddressToConnection();
  m_setups = SetupsCvn73100Scope::Create();
  m_setups->SetCCvn73100EZPtr(m_ccvn73100ez);
}

void Cvn73100Scope::ReadProperties(const PropertyBag& bag) {
  Loading loading(m_iLoading);
  m_debug->Trace("", CLASS_NAME, "UserControl_ReadProperties", "");

  SetCountryCode(bag.ReadLong("CountryCode", DEFAULT_COUNTRY_CODE));
  m_cioconfiguration->SetActiveAddressString(bag.ReadString("Address", DEFAULT_ADDRESS));
  SetFontName(bag.ReadString("FontName", DEFAULT_FONT_NAME));
  SetFontSize(bag.ReadInteger("FontSize", DEFAULT_FONT_SIZE));
  m_bDebugEnabled = bag.ReadBoolean("DebugEnabled", false);
  m_bDontShowSetupIOConfigurationWarning = bag.ReadBoolean("DontShowSetupIOConfigurationWarning", false);
  m_strLastIOHandshakeAddress = bag.ReadString("LastIOHandshakeAddress", "");
  m_bInitialSearchMode = bag.ReadBoolean("InitialSearchMode", false);

  m_ccvn73100ez->ReadProperties(bag);
  m_cioconfiguration->ReadProperties(bag);
  PassAddressToConnection();
  m_ccvn73100ez->SetAmbientUserMode(Host::Current().AmbientUserMode());
  m_ccvn73100ez->SetDebugEnabled(m_bDebugEnabled);
  if (!m_setups) {
    m_setups = SetupsCvn73100Scope::Create();
    m_setups->SetCCvn73100EZPtr(m_ccvn73100ez);
  }
  m_setups->ReadProperties(bag);
  WithoutFatalLog([this, &bag] { m_debug->ReadProperties(bag); });
}

void Cvn73100Scope::WithoutFatalLog(const std::function<void()>& start) {
  try {
    start();
  } catch (const ScopeError& e) {
    m_debug->SwitchLogOff();
    if (!std::exchange(m_bLogWarningGiven, true)) {
      Host::Current().Warning("support log switched off: " + e.Description());
    }
  }
}

void Cvn73100Scope::WriteProperties(PropertyBag& bag) const {
  m_debug->Trace("", CLASS_NAME, "UserControl_WriteProperties", "");

  bag.WriteProperty("CountryCode", Variant(m_lCountryCode), Variant(DEFAULT_COUNTRY_CODE));
  bag.WriteProperty("Address", Variant(Address()), Variant(DEFAULT_ADDRESS));
  bag.WriteProperty("FontName", Variant(m_strFontName), Variant(DEFAULT_FONT_NAME));
  bag.WriteProperty("FontSize", Variant(m_iFontSize), Variant(DEFAULT_FONT_SIZE));
  bag.WriteProperty("DebugEnabled", Variant(m_bDebugEnabled), Variant(false));
  bag.WriteProperty("DontShowSetupIOConfigurationWarning", Variant(m_bDontShowSetupIOConfigurationWarning),
                    Variant(false));
  bag.WriteProperty("LastIOHandshakeAddress", Variant(m_strLastIOHandshakeAddress), Variant(std::string()));
  bag.WriteProperty("InitialSearchMode", Variant(m_bInitialSearchMode), Variant(false));

  m_ccvn73100ez->WriteProperties(bag);
  m_cioconfiguration->WriteProperties(bag);
  if (m_setups) m_setups->WriteProperties(bag);
  m_debug->WriteProperties(bag);
}

void Cvn73100Scope::AmbientChanged() { m_ccvn73100ez->SetAmbientUserMode(Host::Current().AmbientUserMode()); }

void Cvn73100Scope::Terminate() {
  if (!m_setups) return;
  for (std::int32_t count = m_setups->Count(); count > 0; --count) m_setups->Remove(1);
  m_setups.reset();
}

void Cvn73100Scope::SetDebugEnabled(bool value) {
  if (value == m_bDebugEnabled) return;
  m_bDebugEnabled = value;
  m_ccvn73100ez->SetDebugEnabled(value);
  Announce("DebugEnabled");
}

std::string Cvn73100Scope::Version() { return CVN73100_VERSION; }

// --- IPPCvn73100Scope. ---

template <class T>
void Cvn73100Scope::SetLinkMember(T& field, const T& value, const char* member) {
  if (value == field) return;
  field = value;
  Announce(std::string(LINK_PREFIX) + member);
}

void Cvn73100Scope::IOConfigurationChanged() {
  Announce("Address");
  Announce("SearchCriteria");
  PassAddressToConnection();
  if (m_lNotifyIOConfigurationChanged != 0) Announce(std::string(LINK_PREFIX) + "IOConfigurationChanged");
}

std::shared_ptr<CIOconfiguration> Cvn73100Scope::IOConfigurationPropertyPage() const {
  auto copy = std::make_shared<CIOconfiguration>();
  copy->Copy(*m_cioconfiguration);
  return copy;
}

void Cvn73100Scope::SetNotifyIOConfigurationChanged(std::int32_t value) {
  SetLinkMember(m_lNotifyIOConfigurationChanged, value, "NotifyIOConfigurationChanged");
}

void Cvn73100Scope::SetDontShowIOHandshakeWarning(bool value) {
  SetLinkMember(m_bDontShowSetupIOConfigurationWarning, value, "DontShowIOHandshakeWarning");
}

void Cvn73100Scope::SetSearchIOExists(bool value) { SetLinkMember(m_bSearchIOExists, value, "SearchIOExists"); }

void Cvn73100Scope::SetSearchCriteriaExists(bool value) {
  SetLinkMember(m_bSearchCriteriaExists, value, "SearchCriteriaExists");
}

void Cvn73100Scope::SetSetIOExists(bool value) { SetLinkMember(m_bSetIOExists, value, "SetIOExists"); }
void Cvn73100Scope::SetSetupsExists(bool value) { SetLinkMember(m_bSetupsExists, value, "SetupsExists"); }

std::int32_t Cvn73100Scope::ScreenCenterWidthInPixels() const { return Host::Current().ScreenSizeInPixels().first / 2; }

std::int32_t Cvn73100Scope::ScreenCenterHeightInPixels() const {
  return Host::Current().ScreenSizeInPixels().second / 2;
}

void Cvn73100Scope::SetLastIOHandshakeAddress(const std::string& value) {
  SetLinkMember(m_strLastIOHandshakeAddress, value, "LastIOHandshakeAddress");
}

bool Cvn73100Scope::DTROnly() const { return m_cioconfiguration->DTROnly(); }

void Cvn73100Scope::SetDTROnly(bool value) {
  if (value == DTROnly()) return;
  const std::string previous = Address();
  m_cioconfiguration->SetDTROnly(value);
  Announce(std::string(LINK_PREFIX) + "DTROnly");
  // An active serial port now runs DTR/DSR: the connection must open it so.
  if (Address() != previous) {
    PassAddressToConnection();
    Announce("Address");
  }
}

void Cvn73100Scope::SetInitialSearchMode(bool value) {
  SetLinkMember(m_bInitialSearchMode, value, "InitialSearchMode");
}

}  // namespace cvn73100
