#pragma once
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "connection/IPPCvn73100Scope.h"
#include "platform/AutomationServer.h"
#include "platform/Enumerations.h"
#include "platform/Event.h"
#include "platform/InstrumentIO.h"
#include "platform/PropertyBag.h"
#include "platform/Variant.h"

namespace cvn73100 {

class CCvn73100EZ;
class CDebug;
class CIOconfiguration;
class SetupsCvn73100Scope;

// The oscilloscope control a host places on its form: the one public entry point. It owns the
// instrument connection, the I/O configuration, the setups collection and the process-wide support
// messages, saves and restores them with the host's form, and offers the property pages.
//
// Construction needs the I/O library and the automation server registered with Components (both
// raise when missing). Property changes are announced through Host::Current().PropertyChanged,
// except while the control initialises or reads its saved properties: loading a form is no change.
class Cvn73100Scope : public IPPCvn73100Scope {
 public:
  static constexpr const char* CLASS_NAME = "Cvn73100Scope";
  static constexpr const char* DEFAULT_ADDRESS = "GPIB0::7::INSTR";
  static constexpr const char* DEFAULT_FONT_NAME = "MS Sans Serif";
  static constexpr std::int16_t DEFAULT_FONT_SIZE = 8;
  static constexpr std::int32_t DEFAULT_COUNTRY_CODE = Cvn73100_Language_English;
  // The property pages, in the order the host's frame shows them.
  static constexpr const char* PAGE_SEARCH_IO = "Cvn73100PPSrchIO";
  static constexpr const char* PAGE_SEARCH_CRITERIA = "Cvn73100PPSrchCriteria";
  static constexpr const char* PAGE_SET_IO = "Cvn73100PPSetIO";
  static constexpr const char* PAGE_SETUPS = "Cvn73100PPSetup";
  // Prefix of the change notices of the property-page link.
  static constexpr const char* LINK_PREFIX = "IPPCvn73100Scope_";

  // Starts a fresh support-message log (mode 2), creates the connection, sets the initial properties,
  // hands the connection a new I/O manager and leaves the setups collection empty.
  Cvn73100Scope();
  // Terminate, then the owned objects go (the connection closes itself).
  ~Cvn73100Scope() override;
  Cvn73100Scope(const Cvn73100Scope&) = delete;
  Cvn73100Scope& operator=(const Cvn73100Scope&) = delete;

  // --- The public interface, in its order. ---

  // The language of the messages (1, 33, 34, 39, 49, 81, 82, 886). Set selects the language and
  // adopts its font; an unknown code, or an Asian language without its code page, raises
  // -2147221124 and changes nothing.
  Cvn73100_CountryCode CountryCode() const { return static_cast<Cvn73100_CountryCode>(m_lCountryCode); }
  void SetCountryCode(std::int32_t countryCode);
  // Identity string of the instrument at the active address (kept in the I/O configuration).
  const std::string& AddressInstrumentID() const override;
  void SetAddressInstrumentID(const std::string& value) override;
  // The I/O configuration's search settings in its six-array form (CIOconfiguration::DataAsVariant).
  // Set raises what SetDataAsVariant raises and then changes nothing.
  Variant SearchCriteria() const;
  void SetSearchCriteria(const Variant& value);
  // The canonical active address. Set parses the text (an invalid one raises -2147221124 and changes
  // nothing), hands the connection the automation-server form, clears AddressInstrumentID.
  const std::string& Address() const override;
  void SetAddress(const std::string& address);
  // Opens the connection on the active address; failures reach the caller.
  void Initialize();
  // Closes the connection (the serial lines are dropped without the TX delay).
  void CloseConnection();
  // The I/O library's manager shared with the connection.
  std::shared_ptr<IIOManager> IOManager() const override { return m_ioManager; }
  // Shows the property pages: 0 all, opening on the first; 1 all, opening on Setups; 2 only Search
  // Instruments and Search Criteria; 3 only Search Criteria and Set I/O, opening on Set I/O. Any other
  // value raises -2147221124 with message 107 as description.
  void ShowPropertyPages(std::int16_t pages = Cvn73100_ShowPropertyPage_Default);
  // The connection's TX delay (ms); a negative value raises -2147221124.
  std::int32_t TXDelay() const override;
  void SetTXDelay(std::int32_t delay);
  const std::string& FontName() const override { return m_strFontName; }
  void SetFontName(const std::string& fontName);
  std::int16_t FontSize() const override { return m_iFontSize; }
  void SetFontSize(std::int16_t fontSize);
  // Null only after Terminate.
  std::shared_ptr<SetupsCvn73100Scope> Setups() const override { return m_setups; }
  void AboutBox();

  // The automation server's sub-objects, through the connection (which connects first in user mode).
  IAcquisition& Acquisition();
  IAnalogChannels& AnalogChannels();
  ILogicChannel& LogicChannel();
  IMeasure& Measure();
  ITimebase& Timebase();
  ITrigger& Trigger();
  ITrace& Trace();
  IUtilities& Utilities();
  std::string ConnectionName();

  // The connection's operations, arguments passed unchanged.
  void AutoScale();
  void Digitize();
  void Run();
  void SingleTrigger();
  void StopTrigger();
  void Enter(Variant& inputBuffer, const Variant& format = Variant());
  void GetLogicData(Cvn73100_WaveformPoints points, Variant& time, Variant& data);
  Picture GetScreenImage(Cvn73100_ImageFormat format = Cvn73100_ImageFormat_BMP);
  void GetWaveformData(Cvn73100_AnalogChannels channel, Cvn73100_WaveformPoints points, Variant& time, Variant& data);
  void GetAllWaveformData(Cvn73100_WaveformPoints points, Variant::Array& data);
  void Output(const Variant& outputBuffer);
  void ReadBytes(std::int32_t& count, Bytes& buffer);
  void SaveScreenImage(const std::string& fileName, Cvn73100_ImageFormat format = Cvn73100_ImageFormat_BMP);
  void WriteBytes(std::int32_t count, Bytes& buffer);

  // The support-message mode (bits: 1 message box, 2 log file, 4 event, 8 assert).
  std::int32_t SupportMessageMode() const;
  void SetSupportMessageMode(std::int32_t mode);
  bool InstrumentConnected() const;
  bool ResetOnInitialize() const;
  void SetResetOnInitialize(bool value);
  bool CheckIDOnInitialize() const;
  void SetCheckIDOnInitialize(bool value);
  // The active address in the form the automation server takes (a serial one names its handshake).
  std::string AutomationServerAddress() const;

  // Each support message, as CDebug formats it.
  Event<const std::string&> SupportMessage;

  // --- The host's side. ---

  // The defaults of a new form: font, address "GPIB0::7::INSTR", an empty setups collection.
  void InitProperties();
  // Reads the control's keys, then the connection's, the I/O configuration's, the setups' and the
  // support messages' switches. A value the setters refuse raises their error.
  void ReadProperties(const PropertyBag& bag);
  // Writes the same keys in the same order; values equal to their defaults are not stored.
  void WriteProperties(PropertyBag& bag) const;
  // The host's user mode changed: the connection opens on demand only in user mode.
  void AmbientChanged();
  // Removes every setup and releases the collection. Called by the destructor; later calls do nothing.
  void Terminate();

  // Handed to the connection as its DebugEnabled; saved.
  bool DebugEnabled() const { return m_bDebugEnabled; }
  void SetDebugEnabled(bool value);
  // The pages offered at the moment, in order.
  const std::vector<std::string>& PropertyPages() const { return m_astrPropertyPages; }
  // The control's own I/O configuration and connection, for its pages.
  std::shared_ptr<CIOconfiguration> IOConfiguration() const { return m_cioconfiguration; }
  std::shared_ptr<CCvn73100EZ> Connection() const override { return m_ccvn73100ez; }
  const std::string& HelpFile() const { return m_strHelpFile; }
  // The control's version, as the About box shows it.
  static std::string Version();

  // --- IPPCvn73100Scope. ---

  void IOConfigurationChanged() override;
  std::shared_ptr<CIOconfiguration> IOConfigurationControl() const override { return m_cioconfiguration; }
  std::shared_ptr<CIOconfiguration> IOConfigurationPropertyPage() const override;
  std::int32_t NotifyIOConfigurationChanged() const override { return m_lNotifyIOConfigurationChanged; }
  void SetNotifyIOConfigurationChanged(std::int32_t value) override;
  bool DontShowIOHandshakeWarning() const override { return m_bDontShowSetupIOConfigurationWarning; }
  void SetDontShowIOHandshakeWarning(bool value) override;
  bool SearchIOExists() const override { return m_bSearchIOExists; }
  void SetSearchIOExists(bool value) override;
  bool SearchCriteriaExists() const override { return m_bSearchCriteriaExists; }
  void SetSearchCriteriaExists(bool value) override;
  bool SetIOExists() const override { return m_bSetIOExists; }
  void SetSetIOExists(bool value) override;
  bool SetupsExists() const override { return m_bSetupsExists; }
  void SetSetupsExists(bool value) override;
  std::int32_t ScreenCenterWidthInPixels() const override;
  std::int32_t ScreenCenterHeightInPixels() const override;
  bool CenterPropertyPages() const override { return m_bCenterPropertyPages; }
  void SetCenterPropertyPages(bool value) override { m_bCenterPropertyPages = value; }
  const std::string& LastIOHandshakeAddress() const override { return m_strLastIOHandshakeAddress; }
  void SetLastIOHandshakeAddress(const std::string& value) override;
  bool DTROnly() const override;
  void SetDTROnly(bool value) override;
  bool InitialSearchMode() const override { return m_bInitialSearchMode; }
  void SetInitialSearchMode(bool value) override;

 private:
  // Tells the host that `name` changed, unless the control is loading.
  void Announce(const std::string& name) const;
  // Stores `value` in `field` and announces LINK_PREFIX + `member` when it differs.
  template <class T>
  void SetLinkMember(T& field, const T& value, const char* member);
  // Gives the connection the I/O configuration's active address.
  void PassAddressToConnection();
  void ShowPages(const std::vector<std::string>& pages, int initialPage);
  void OnInstrumentID(const std::string& id);
  void ConnectEvents();
  // Runs `start`, which may switch the support log on; a log file that cannot be opened switches the log
  // off with one warning instead of failing the control.
  void WithoutFatalLog(const std::function<void()>& start);
  std::vector<std::string> AllPages() const;

  std::string m_strHelpFile;
  std::shared_ptr<CDebug> m_debug;
  bool m_bLogWarningGiven = false;
  std::shared_ptr<CCvn73100EZ> m_ccvn73100ez;
  std::shared_ptr<CIOconfiguration> m_cioconfiguration;
  std::shared_ptr<SetupsCvn73100Scope> m_setups;
  std::shared_ptr<IIOManager> m_ioManager;
  std::vector<EventConnection> m_eventConnections;
  std::vector<std::string> m_astrPropertyPages;
  int m_iLoading = 0;

  std::string m_strFontName = DEFAULT_FONT_NAME;
  std::int16_t m_iFontSize = DEFAULT_FONT_SIZE;
  bool m_bDebugEnabled = false;
  bool m_bDontShowSetupIOConfigurationWarning = false;
  std::string m_strLastIOHandshakeAddress;
  bool m_bInitialSearchMode = false;
  std::int32_t m_lCountryCode = DEFAULT_COUNTRY_CODE;

  bool m_bCenterPropertyPages = true;
  bool m_bSearchIOExists = false;
  bool m_bSearchCriteriaExists = false;
  bool m_bSetIOExists = false;
  bool m_bSetupsExists = false;
  std::int32_t m_lNotifyIOConfigurationChanged = 0;
};

}  // namespace cvn73100
