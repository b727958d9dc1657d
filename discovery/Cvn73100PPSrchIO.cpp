#include "discovery/Cvn73100PPSrchIO.h"

#include <algorithm>
#include <cctype>
#include <exception>

#include "dialogs/AutoCenter.h"
#include "connection/IPPCvn73100Scope.h"
#include "diagnostics/CDebug.h"
#include "dialogs/Messages.h"
#include "discovery/FrmSearchResults.h"
#include "ioconfig/CIOconfiguration.h"
#include "ioconfig/IOConfigurationConstants.h"
#include "ioconfig/ModIsHandshakeOK.h"

namespace cvn73100 {
namespace {

constexpr const char* NL = "\r\n";
constexpr const char* MODEL_WORD = "MODEL";
constexpr const char* IDLE_TRACE = "Cvn73100PPSrchIO TimerIdleProcessing_Timer (AddressChanged)";

std::string Msg(int number) { return Messages::Load(number); }

void Check(bool condition, const char* expression, const char* procedure, const char* location = "") {
  CDebug::Instance().Assert(condition, expression, Cvn73100PPSrchIO::CLASS_NAME, procedure, location);
}

// Leading and trailing spaces only: a reply's fields keep any other white space.
std::string TrimSpaces(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string Upper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

bool IsGPIBRowAddress(const std::string& address) { return address.find(GPIB_PREFIX) != std::string::npos; }

std::string FullGPIBAddress(const std::string& rowAddress) { return rowAddress + ADDRESS_SEPARATOR + RESOURCE_CLASS; }

// The query's result codes the search lists; anything else means the query was asked the wrong thing.
bool IsListedRS232Code(std::int16_t code) { return code >= IDNSupported && code <= IDNNotIEEE4882; }
bool IsListedGPIBCode(std::int16_t code) { return code >= IDNSupported && code <= IDNNoResponse; }

}  // namespace

Cvn73100PPSrchIO::Cvn73100PPSrchIO(ISearchInstrumentsView& view) : m_view(view) {
  m_cqueryinstrument.Initialize(CQueryInstrument::DEFAULT_TX_DELAY, nullptr, nullptr);
  // The view may still be under construction here; it learns of the timer from PropertyPage_Paint.
  m_bDiscoveryTimer = true;
}

Cvn73100PPSrchIO::~Cvn73100PPSrchIO() = default;

// --- Fixed texts ---

std::string Cvn73100PPSrchIO::PageCaption() { return Msg(200); }
std::array<std::string, 4> Cvn73100PPSrchIO::ColumnHeaders() { return {Msg(201), Msg(202), Msg(203), Msg(204)}; }
std::string Cvn73100PPSrchIO::SupportedCaption() { return Msg(205); }
std::string Cvn73100PPSrchIO::TestCaption() { return Msg(206); }
std::string Cvn73100PPSrchIO::SearchCaption() { return Msg(207); }

// --- Binding ---

IPPCvn73100Scope* Cvn73100PPSrchIO::SelectedControl(const char* procedure) const {
  Check(m_control != nullptr, "(Not (PropertyPage.SelectedControls(0) Is Nothing))", procedure);
  return m_control;
}

void Cvn73100PPSrchIO::TakeControlConfiguration(IPPCvn73100Scope& control) {
  const IPPCvn73100Scope& ipp = control;
  m_cioconfiguration = ipp.IOConfigurationPropertyPage();
  m_lTXDelay = control.TXDelay();
  m_cqueryinstrument.Initialize(m_lTXDelay, m_cioconfiguration, control.IOManager());
  m_strKnownAddress = ipp.IOConfigurationControl()->ActiveAddressString();
}

void Cvn73100PPSrchIO::PropertyPage_SelectionChanged(IPPCvn73100Scope* control) {
  m_control = control;
  if (!SelectedControl("PropertyPage_SelectionChanged")) return;
  TakeControlConfiguration(*control);
  const IPPCvn73100Scope& ipp = *control;
  // A control that has never searched makes the first search offer its first row for Apply.
  m_bFirstSearch = ipp.InitialSearchMode();
}

void Cvn73100PPSrchIO::TimerInstrumentDiscovery_Timer() {
  if (!Bound()) {
    m_lDiscoveryDelay += DISCOVERY_TIMER_INTERVAL;
    Check(m_lDiscoveryDelay < MAX_DISCOVERY_DELAY, "(m_lDiscoveryDelay < MAX_DISCOVERY_DELAY)",
          "TimerInstrumentDiscovery_Timer");
    if (m_lDiscoveryDelay > MAX_DISCOVERY_DELAY) {
      SetTimer(SearchPageTimer::InstrumentDiscovery, false);
      throw CatalogueError(ERR_INVALID_PROPERTY_VALUE, 210, 216);
    }
    return;
  }

  SetTimer(SearchPageTimer::InstrumentDiscovery, false);
  if (m_bFirstSearch) {
    SetMessage(Msg(272), true);
  } else {
    SetMessage(Msg(270) + NL + Msg(272), true);
    SetTimer(SearchPageTimer::IdleProcessing, true);
  }
}

void Cvn73100PPSrchIO::PropertyPage_Paint() {
  ShowList();
  m_view.SetWorkingText(m_strWorkingText);
  m_view.SetMessage(m_strMessageText, m_bMessageVisible);
  m_view.EnableTest(m_bTestEnabled);
  m_view.SetMousePointer(m_iMousePointer);
  m_view.SetChanged(m_bChanged);
  m_view.SetTimer(SearchPageTimer::InstrumentDiscovery, m_bDiscoveryTimer, DISCOVERY_TIMER_INTERVAL);
  m_view.SetTimer(SearchPageTimer::IdleProcessing, m_bIdleTimer, IDLE_TIMER_INTERVAL);
}

void Cvn73100PPSrchIO::PropertyPage_Terminate() {
  SetTimer(SearchPageTimer::InstrumentDiscovery, false);
  SetTimer(SearchPageTimer::IdleProcessing, false);
  m_cqueryinstrument.Initialize(CQueryInstrument::DEFAULT_TX_DELAY, nullptr, nullptr);
  m_control = nullptr;
}

// --- The list ---

void Cvn73100PPSrchIO::AddInstrumentToList(const std::string& reply, const std::string& address,
                                           std::int32_t position) {
  const std::size_t firstComma = reply.find(',');
  const std::string manufacturer = firstComma == std::string::npos ? Msg(229) : TrimSpaces(reply.substr(0, firstComma));
  std::string model = Msg(230);
  if (firstComma != std::string::npos) {
    const std::size_t secondComma = reply.find(',', firstComma + 1);
    if (secondComma != std::string::npos)
      model = TrimSpaces(reply.substr(firstComma + 1, secondComma - firstComma - 1));
  }

  const auto fault = [] {
    Check(false, "False", "AddInstrumentToList");
    return InvalidPropertyValue();
  };
  if (address.empty()) throw fault();

  // Some instruments answer "MODEL 73135D" in the model field.
  const std::size_t word = Upper(model).find(MODEL_WORD);
  if (word != std::string::npos) model = TrimSpaces(model.substr(word + std::string(MODEL_WORD).size()));

  InstrumentRow row;
  row.model = model;
  if (CQueryInstrument::ModelCompatibility(model) == IDNSupported) row.supported = Msg(202);
  row.address = address;
  if (IsGPIBRowAddress(address)) {
    const std::size_t first = address.find(ADDRESS_SEPARATOR);
    const std::size_t second =
        first == std::string::npos ? std::string::npos : address.find(ADDRESS_SEPARATOR, first + 2);
    if (second == std::string::npos) throw fault();
    row.address = address.substr(0, second);
  }
  row.manufacturer = manufacturer;
  row.reply = reply;

  const auto count = static_cast<std::int32_t>(m_rows.size());
  if (position < 0) {
    m_rows.push_back(std::move(row));
  } else {
    if (position < 1 || position > count + 1) throw fault();
    m_rows.insert(m_rows.begin() + (position - 1), std::move(row));
    // Rows behind the new one moved down; the selection follows its row.
    if (m_lSelectedIndex >= position) ++m_lSelectedIndex;
  }
}

std::int32_t Cvn73100PPSrchIO::FindConnectedRow(const std::string& activeAddress) const {
  // Only the row's text is compared, as a prefix of the active address, and the first match wins:
  // a row GPIB0::1 listed before GPIB0::12 is taken for GPIB0::12::INSTR.
  for (std::size_t i = 0; i < m_rows.size(); ++i) {
    const std::string& rowAddress = m_rows[i].address;
    if (activeAddress.compare(0, rowAddress.size(), rowAddress) == 0 && activeAddress.size() >= rowAddress.size())
      return static_cast<std::int32_t>(i) + 1;
  }
  return -1;
}

void Cvn73100PPSrchIO::MarkConnected(std::int32_t row) {
  for (std::size_t i = 0; i < m_rows.size(); ++i)
    m_rows[i].icon = static_cast<std::int32_t>(i) + 1 == row ? CONNECTED_INSTRUMENT_ICON : "";
}

void Cvn73100PPSrchIO::Select(std::int32_t row) {
  m_lSelectedIndex = row;
  ShowList();
  if (row > 0) m_view.EnsureVisible(row);
}

void Cvn73100PPSrchIO::ListViewInstruments_ItemClick(std::int32_t row) {
  if (m_bSearching || row < 1 || row > static_cast<std::int32_t>(m_rows.size())) return;
  const bool other = row != m_lSelectedIndex;
  Select(row);
  SetTestEnabled(true);
  if (other) SetChanged();
}

void Cvn73100PPSrchIO::ListViewInstruments_DblClick() { Test_Click(); }

// --- Search ---

std::int32_t Cvn73100PPSrchIO::ProbeCount() const {
  std::int32_t count = 0;
  for (std::int32_t port = RS232_PORT::First; port <= RS232_PORT::Last; ++port)
    if (m_cioconfiguration->RS232PortInstalled(port) && m_cioconfiguration->RS232PortIncluded(port)) ++count;
  for (std::int32_t board = GPIB_PORT::First; board <= GPIB_PORT::Last; ++board) {
    if (!m_cioconfiguration->GPIBPortInstalled(board) || !m_cioconfiguration->GPIBPortIncluded(board)) continue;
    for (std::int32_t address = SEARCH_CRITERIA::FIRST_GPIB_INCLUDE; address <= SEARCH_CRITERIA::LAST_GPIB_INCLUDE;
         ++address)
      if (m_cioconfiguration->GPIBPortIncludes(board, address)) ++count;
  }
  return count;
}

void Cvn73100PPSrchIO::FindPorts(IPPCvn73100Scope& control) {
  SetWorking(Msg(208));
  Busy();
  m_cioconfiguration->FindAll(control);
}

void Cvn73100PPSrchIO::ShowPortNotOpened(const std::string& address) {
  const std::string prompt = CQueryInstrument::AppendAddressAt(Msg(241), address) + NL + NL + Msg(242) + NL + Msg(243);
  AutoCenter::MsgBoxAutoCenter(m_view.Window(), prompt, PORT_BOX_STYLE, Msg(207));
}

void Cvn73100PPSrchIO::SearchRS232(IPPCvn73100Scope& control, std::int32_t& step, std::int32_t total) {
  for (std::int32_t port = RS232_PORT::First; port <= RS232_PORT::Last; ++port) {
    Busy();
    if (!m_cioconfiguration->RS232PortInstalled(port) || !m_cioconfiguration->RS232PortIncluded(port)) continue;

    SetWorking(RS232_PREFIX + std::to_string(port));
    m_view.ShowProgress(step, total);
    if (m_cioconfiguration->FindRS232Port(port, control)) {
      const std::string address = m_cioconfiguration->RS232PortString(port);
      std::string reply;
      const std::int16_t code = m_cqueryinstrument.RS232IDNQuery(address, reply);
      if (IsListedRS232Code(code)) {
        m_abFoundOnCOM[static_cast<std::size_t>(port - RS232_PORT::First)] = true;
        AddInstrumentToList(reply, address, -1);
        ShowList();
        Refresh();
      } else if (code != IDNNoResponse) {
        Check(false, "False", "Click");
        throw ScopeError(ObjectError(ERR_INVALID_PROPERTY_VALUE), Msg(104),
                         CQueryInstrument::AppendAddressAt(Msg(109), address));
      }
    } else {
      ShowPortNotOpened(m_cioconfiguration->RS232PortString(port));
    }
    ++step;
  }
}

void Cvn73100PPSrchIO::SearchGPIB(IPPCvn73100Scope& control, std::int32_t& step, std::int32_t total) {
  for (std::int32_t board = GPIB_PORT::First; board <= GPIB_PORT::Last; ++board) {
    if (!m_cioconfiguration->GPIBPortInstalled(board) || !m_cioconfiguration->GPIBPortIncluded(board)) continue;

    if (!m_cioconfiguration->FindGPIBPort(board, control)) {
      ShowPortNotOpened(m_cioconfiguration->GPIBPortString(board));
      for (std::int32_t a = SEARCH_CRITERIA::FIRST_GPIB_INCLUDE; a <= SEARCH_CRITERIA::LAST_GPIB_INCLUDE; ++a)
        if (m_cioconfiguration->GPIBPortIncludes(board, a)) ++step;
      continue;
    }
    for (std::int32_t a = SEARCH_CRITERIA::FIRST_GPIB_INCLUDE; a <= SEARCH_CRITERIA::LAST_GPIB_INCLUDE; ++a) {
      if (!m_cioconfiguration->GPIBPortIncludes(board, a)) continue;
      const std::string address = GPIB_PREFIX + std::to_string(board) + ADDRESS_SEPARATOR + std::to_string(a) +
                                  ADDRESS_SEPARATOR + RESOURCE_CLASS;
      SetWorking(address);
      m_view.ShowProgress(step, total);
      std::string reply;
      const std::int16_t code = m_cqueryinstrument.GPIBIDNQuery(address, reply);
      // A silent address is listed too (with "Unknown" fields), unlike a silent COM port.
      if (!IsListedGPIBCode(code)) {
        Check(false, "False", "Click");
        throw ScopeError(ObjectError(ERR_INVALID_PROPERTY_VALUE), Msg(104),
                         CQueryInstrument::AppendAddressAt(Msg(110), address));
      }
      AddInstrumentToList(reply, address, -1);
      ShowList();
      Refresh();
      ++step;
    }
  }
}

void Cvn73100PPSrchIO::Search_Click() {
  IPPCvn73100Scope* control = SelectedControl("Search_Click");
  if (!control || !Bound() || m_bSearching) return;

  // However the search ends, the page leaves the searching state and the hourglass.
  struct SearchState {
    Cvn73100PPSrchIO& page;
    ~SearchState() {
      page.m_bSearching = false;
      page.SetMousePointer(MOUSE_POINTER_DEFAULT);
    }
  } searchState{*this};

  SetMessage(m_strMessageText, false);
  SetTestEnabled(false);
  m_bSearching = true;
  m_rows.clear();
  m_lSelectedIndex = -1;
  m_abFoundOnCOM.fill(false);
  ShowList();

  if (!m_cioconfiguration->HasInstalledPorts()) FindPorts(*control);

  SetWorking(Msg(209));
  Busy();

  m_lTXDelay = control->TXDelay();
  m_cqueryinstrument.Initialize(m_lTXDelay, m_cioconfiguration, control->IOManager());

  const std::int32_t total = ProbeCount();
  std::int32_t step = 0;
  SearchRS232(*control, step, total);
  SearchGPIB(*control, step, total);
  m_view.ShowProgress(total, total);
  SetWorking("");

  const std::int32_t connected = FindConnectedRow(m_cioconfiguration->ActiveAddressString());
  m_lSelectedIndex = connected;
  if (connected > 0) {
    MarkConnected(connected);
    Select(connected);
    SetTestEnabled(true);
  }

  if (m_bFirstSearch) {
    if (!m_rows.empty() && connected < 0) {
      MarkConnected(1);
      Select(1);
      SetTestEnabled(true);
    }
    m_bFirstSearch = false;
    SetChanged();
    SetTimer(SearchPageTimer::IdleProcessing, true);
  }

  if (!m_rows.empty()) {
    SetMessage(Msg(273), true);
  } else {
    SetMessage(Msg(244), true);
  }
  ShowList();

  m_bSearching = false;
  SetMousePointer(MOUSE_POINTER_DEFAULT);

  if (std::find(m_abFoundOnCOM.begin(), m_abFoundOnCOM.end(), false) != m_abFoundOnCOM.end()) OfferExclusions();
}

void Cvn73100PPSrchIO::OfferExclusions() {
  FrmSearchResults dialog;
  for (std::int32_t i = 0; i < FrmSearchResults::COM_PORT_COUNT; ++i) {
    dialog.SetInstrumentFoundOnCOMPort(i, m_abFoundOnCOM[static_cast<std::size_t>(i)]);
    dialog.SetIncludedCOMPort(i, m_cioconfiguration->RS232PortIncluded(i + RS232_PORT::First));
  }
  dialog.Update();
  dialog.Show();
  m_view.ShowSearchResults(dialog);

  bool changed = false;
  for (std::int32_t i = 0; i < FrmSearchResults::COM_PORT_COUNT; ++i) {
    const std::int32_t port = i + RS232_PORT::First;
    if (dialog.IncludedCOMPort(i) != m_cioconfiguration->RS232PortIncluded(port)) {
      m_cioconfiguration->SetRS232PortIncluded(port, dialog.IncludedCOMPort(i));
      changed = true;
    }
  }
  // The exclusions reach the control with the next Apply.
  if (changed) SetChanged();
}

// --- Test ---

void Cvn73100PPSrchIO::Test_Click() {
  IPPCvn73100Scope* control = SelectedControl("Test_Click");
  if (!control || !Bound() || m_bSearching || m_rows.empty()) return;
  const std::int32_t index = m_lSelectedIndex;
  if (index < 1 || index > static_cast<std::int32_t>(m_rows.size())) return;

  std::string address = m_rows[static_cast<std::size_t>(index - 1)].address;
  if (IsGPIBRowAddress(address)) address = FullGPIBAddress(address);

  struct Pointer {
    Cvn73100PPSrchIO& page;
    ~Pointer() { page.SetMousePointer(MOUSE_POINTER_DEFAULT); }
  } pointer{*this};
  SetWorking(Msg(271));
  SetMousePointer(MOUSE_POINTER_HOURGLASS);
  Refresh();

  std::string reply;
  m_cqueryinstrument.Test(m_view.Window(), address, reply);
  SetWorking("");

  m_rows.erase(m_rows.begin() + (index - 1));
  AddInstrumentToList(reply, address, index);
  m_lSelectedIndex = index;
  const IPPCvn73100Scope& ipp = *control;
  MarkConnected(FindConnectedRow(ipp.IOConfigurationControl()->ActiveAddressString()));
  Select(index);
}

// --- Apply ---

void Cvn73100PPSrchIO::PropertyPage_ApplyChanges() {
  CDebug::Instance().Trace("", CLASS_NAME, "PropertyPage_ApplyChanges", "Start");
  IPPCvn73100Scope* control = SelectedControl("PropertyPage_ApplyChanges");
  if (!control || !Bound() || m_bSearching) return;
  IPPCvn73100Scope& ipp = *control;
  if (ipp.SearchIOExists() || ipp.SearchCriteriaExists() || ipp.SetIOExists() || ipp.SetupsExists()) return;

  std::string identity;
  bool rowApplied = false;
  if (m_lSelectedIndex > 0) {
    const auto count = static_cast<std::int32_t>(m_rows.size());
    Check(count > 0, "(ListViewInstruments.ListItems.Count > 0)", "PropertyPage_ApplyChanges");
    Check(count >= m_lSelectedIndex, "(ListViewInstruments.ListItems.Count >= m_lSelectedIndex)",
          "PropertyPage_ApplyChanges");
    if (m_lSelectedIndex <= count) {
      MarkConnected(m_lSelectedIndex);
      ShowList();
      const InstrumentRow& row = m_rows[static_cast<std::size_t>(m_lSelectedIndex - 1)];
      if (IsGPIBRowAddress(row.address)) {
        m_cioconfiguration->SetActiveAddressString(FullGPIBAddress(row.address));
      } else {
        m_cioconfiguration->SetActiveIOPort(row.address);
      }
      identity = row.reply;
      rowApplied = true;
    }
  }

  ipp.IOConfigurationControl()->Copy(*m_cioconfiguration);
  ipp.IOConfigurationChanged();
  // The identity read at the address just chosen replaces the one of the previous address.
  if (rowApplied) control->SetAddressInstrumentID(identity);
  TakeControlConfiguration(*control);

  bool dontShow = ipp.DontShowIOHandshakeWarning();
  std::string lastAddress = ipp.LastIOHandshakeAddress();
  bool warningShown = false;
  IsHandshakeOK(control->Address(), control->AddressInstrumentID(), m_view.Window(), dontShow, lastAddress,
                warningShown, false, true);
  ipp.SetDontShowIOHandshakeWarning(dontShow);
  ipp.SetLastIOHandshakeAddress(lastAddress);

  m_bChanged = false;
  m_view.SetChanged(false);
}

// --- Idle ---

void Cvn73100PPSrchIO::CheckIncludeMasks() const {
  for (std::int32_t board = GPIB_PORT::First; board <= GPIB_PORT::Last; ++board) {
    std::int64_t lMaskValue = 0;
    for (std::int32_t a = SEARCH_CRITERIA::FIRST_GPIB_INCLUDE; a <= SEARCH_CRITERIA::LAST_GPIB_INCLUDE; ++a)
      if (m_cioconfiguration->GPIBPortIncludes(board, a)) lMaskValue |= std::int64_t{1} << a;
    Check(lMaskValue >= 0 && lMaskValue <= LARGEST_MASK_VALUE, "(lMaskValue >= 0 And lMaskValue <= LARGEST_MASK_VALUE)",
          "TimerIdleProcessing_Timer");
  }
}

void Cvn73100PPSrchIO::TimerIdleProcessing_Timer() {
  IPPCvn73100Scope* control = SelectedControl("TimerIdleProcessing_Timer");
  if (!control || !Bound() || m_bSearching) return;
  CheckIncludeMasks();

  const IPPCvn73100Scope& ipp = *control;
  const std::string address = ipp.IOConfigurationControl()->ActiveAddressString();
  if (address == m_strKnownAddress) return;

  CDebug::Instance().Trace(IDLE_TRACE, CLASS_NAME, "TimerIdleProcessing_Timer", "");
  TakeControlConfiguration(*control);
  const std::int32_t connected = FindConnectedRow(address);
  MarkConnected(connected);
  m_lSelectedIndex = connected;
  Select(connected);
  SetTestEnabled(connected > 0);
  SetMessage(Msg(274), true);
}

// --- What the view shows ---

bool Cvn73100PPSrchIO::TimerEnabled(SearchPageTimer timer) const {
  return timer == SearchPageTimer::InstrumentDiscovery ? m_bDiscoveryTimer : m_bIdleTimer;
}

void Cvn73100PPSrchIO::SetTimer(SearchPageTimer timer, bool enabled) {
  bool& state = timer == SearchPageTimer::InstrumentDiscovery ? m_bDiscoveryTimer : m_bIdleTimer;
  if (state == enabled) return;
  state = enabled;
  m_view.SetTimer(timer, enabled,
                  timer == SearchPageTimer::InstrumentDiscovery ? DISCOVERY_TIMER_INTERVAL : IDLE_TIMER_INTERVAL);
}

void Cvn73100PPSrchIO::ShowList() { m_view.ShowRows(m_rows, m_lSelectedIndex); }

void Cvn73100PPSrchIO::SetWorking(const std::string& text) {
  m_strWorkingText = text;
  m_view.SetWorkingText(text);
}

void Cvn73100PPSrchIO::SetMessage(const std::string& text, bool visible) {
  m_strMessageText = text;
  m_bMessageVisible = visible;
  m_view.SetMessage(text, visible);
}

void Cvn73100PPSrchIO::SetTestEnabled(bool enabled) {
  m_bTestEnabled = enabled;
  m_view.EnableTest(enabled);
}

void Cvn73100PPSrchIO::SetMousePointer(int pointer) {
  m_iMousePointer = pointer;
  m_view.SetMousePointer(pointer);
}

void Cvn73100PPSrchIO::SetChanged() {
  m_bChanged = true;
  m_view.SetChanged(true);
}

void Cvn73100PPSrchIO::Refresh() {
  m_view.Refresh();
  Host::Current().ProcessEvents();
}

void Cvn73100PPSrchIO::Busy() {
  SetMousePointer(MOUSE_POINTER_HOURGLASS);
  Refresh();
  try {
    m_view.FocusSearch();
  } catch (const std::exception&) {
    // The button may not take the focus (a hidden page); the search goes on.
  }
}

}  // namespace cvn73100
