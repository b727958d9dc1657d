#include "discovery/Cvn73100PPSrchIO.h"

#include <algorithm>
#include <cctype>
#include <exception>

#include "connection/IPPCvn73100Scope.h"
#include "diagnostics/CDebug.h"
#include "dialogs/AutoCenter.h"
#include "dialogs/Messages.h"
#include "discovery/FrmSearchResults.h"
#include "discovery/SearchWorkers.h"
#include "ioconfig/CIOconfiguration.h"
#include "ioconfig/IOConfigurationConstants.h"
#include "ioconfig/ModIsHandshakeOK.h"
#include "platform/Interrupt.h"

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

void Cvn73100PPSrchIO::ShowPortNotOpened(const std::string& address, const std::string& cause) {
  std::string prompt = CQueryInstrument::AppendAddressAt(Msg(241), address);
  if (!cause.empty()) prompt += std::string(NL) + NL + cause;
  prompt += std::string(NL) + NL + Msg(242) + NL + Msg(243);
  AutoCenter::MsgBoxAutoCenter(m_view.Window(), prompt, PORT_BOX_STYLE, Msg(207));
}

std::vector<Cvn73100PPSrchIO::SearchPort> Cvn73100PPSrchIO::PlanSearch() const {
  std::vector<SearchPort> ports;
  for (std::int32_t port = RS232_PORT::First; port <= RS232_PORT::Last; ++port) {
    if (!m_cioconfiguration->RS232PortInstalled(port) || !m_cioconfiguration->RS232PortIncluded(port)) continue;
    const std::string name = m_cioconfiguration->RS232PortString(port);
    ports.push_back(SearchPort{port, -1, name, {name}});
  }
  for (std::int32_t board = GPIB_PORT::First; board <= GPIB_PORT::Last; ++board) {
    if (!m_cioconfiguration->GPIBPortInstalled(board) || !m_cioconfiguration->GPIBPortIncluded(board)) continue;
    SearchPort port{0, board, m_cioconfiguration->GPIBPortString(board), {}};
    for (std::int32_t a = SEARCH_CRITERIA::FIRST_GPIB_INCLUDE; a <= SEARCH_CRITERIA::LAST_GPIB_INCLUDE; ++a)
      if (m_cioconfiguration->GPIBPortIncludes(board, a))
        port.addresses.push_back(port.name + ADDRESS_SEPARATOR + std::to_string(a) + ADDRESS_SEPARATOR +
                                 RESOURCE_CLASS);
    ports.push_back(std::move(port));
  }
  return ports;
}

// Runs on a worker: reports to `workers` only, never to the view.
void Cvn73100PPSrchIO::ProbePort(const SearchPort& port, std::size_t index, const IIOManagerSource& io,
                                 SearchWorkers& workers) const {
  const auto report = [&](SearchEvent::Kind kind, const std::string& address) {
    SearchEvent event;
    event.kind = kind;
    event.port = index;
    event.address = address;
    return event;
  };
  CQueryInstrument query;
  query.Initialize(m_lTXDelay, m_cioconfiguration, io.IOManager());
  const bool gpib = port.board >= 0;
  if (!gpib) workers.Report(report(SearchEvent::Kind::Starting, port.name));
  if (!(gpib ? m_cioconfiguration->FindGPIBPort(port.board, io) : m_cioconfiguration->FindRS232Port(port.rs232, io))) {
    SearchEvent event = report(SearchEvent::Kind::NotOpened, port.name);
    if (!port.addresses.empty()) event.cause = query.WhyNotOpened(port.addresses.front());
    workers.Report(std::move(event));
    return;
  }
  for (const std::string& address : port.addresses) {
    if (gpib) workers.Report(report(SearchEvent::Kind::Starting, address));
    SearchEvent event = report(SearchEvent::Kind::Probed, address);
    event.code = gpib ? query.GPIBIDNQuery(address, event.reply) : query.RS232IDNQuery(address, event.reply);
    workers.Report(std::move(event));
  }
}

void Cvn73100PPSrchIO::FollowSearch(const std::vector<SearchPort>& ports, SearchWorkers& workers, std::int32_t total) {
  std::vector<std::vector<SearchEvent>> pending(ports.size());
  std::vector<std::string> inFlight(ports.size());
  std::size_t merged = 0;  // ports whose every report is in the list
  std::int32_t step = 0;
  const auto take = [&](std::vector<SearchEvent> events) {
    for (SearchEvent& event : events) {
      const std::size_t i = event.port;
      switch (event.kind) {
        case SearchEvent::Kind::Starting:
          inFlight[i] = event.address;
          ShowInFlight(inFlight);
          m_view.ShowProgress(step, total);
          continue;
        case SearchEvent::Kind::Probed:
          ++step;
          break;
        case SearchEvent::Kind::NotOpened:
          step += static_cast<std::int32_t>(ports[i].addresses.size());
          break;
        case SearchEvent::Kind::Ended:
          inFlight[i].clear();
          break;
      }
      pending[i].push_back(std::move(event));
    }
  };
  try {
    while (merged < ports.size()) {
      take(workers.Collect(Interrupt::kPollInterval));
      // Rows appear in the order of a search of one port after another, whichever port answers first.
      while (merged < ports.size()) {
        const bool ended = MergePort(ports[merged], pending[merged], false);
        pending[merged].clear();
        if (!ended) break;
        ++merged;
      }
      Refresh();
      Interrupt::Check();
    }
  } catch (const Interrupted&) {
    workers.Stop();
    take(workers.Collect(std::chrono::milliseconds(0)));
    for (std::size_t i = merged; i < ports.size(); ++i) MergePort(ports[i], pending[i], true);
    throw;
  }
}

bool Cvn73100PPSrchIO::MergePort(const SearchPort& port, const std::vector<SearchEvent>& events, bool stopped) {
  const bool gpib = port.board >= 0;
  bool ended = false;
  for (const SearchEvent& event : events) {
    switch (event.kind) {
      case SearchEvent::Kind::Starting:
        break;
      case SearchEvent::Kind::NotOpened:
        if (!gpib) m_abPresentCOM[static_cast<std::size_t>(port.rs232 - RS232_PORT::First)] = false;
        if (!stopped) ShowPortNotOpened(event.address, event.cause);
        break;
      case SearchEvent::Kind::Probed:
        // A silent GPIB address is listed too (with "Unknown" fields), unlike a silent COM port.
        if (gpib ? IsListedGPIBCode(event.code) : IsListedRS232Code(event.code)) {
          if (!gpib) m_abFoundOnCOM[static_cast<std::size_t>(port.rs232 - RS232_PORT::First)] = true;
          AddInstrumentToList(event.reply, event.address, -1);
          ShowList();
        } else if ((gpib || event.code != IDNNoResponse) && !stopped) {
          Check(false, "False", "Click");
          throw ScopeError(ObjectError(ERR_INVALID_PROPERTY_VALUE), Msg(104),
                           CQueryInstrument::AppendAddressAt(Msg(gpib ? 110 : 109), event.address));
        }
        break;
      case SearchEvent::Kind::Ended:
        if (event.failure && !stopped) std::rethrow_exception(event.failure);
        ended = true;
        break;
    }
  }
  return ended;
}

void Cvn73100PPSrchIO::ShowInFlight(const std::vector<std::string>& addresses) {
  std::string text;
  for (const std::string& address : addresses)
    if (!address.empty()) text += (text.empty() ? "" : ", ") + address;
  SetWorking(text);
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
  for (std::int32_t port = RS232_PORT::First; port <= RS232_PORT::Last; ++port)
    m_abPresentCOM[static_cast<std::size_t>(port - RS232_PORT::First)] = m_cioconfiguration->RS232PortInstalled(port);

  const std::vector<SearchPort> ports = PlanSearch();
  const std::int32_t total = ProbeCount();
  {
    // The workers take turns at the control's I/O manager, which serves one thread at a time.
    const std::shared_ptr<IIOManager> manager = control->IOManager();
    const auto shared = manager ? std::make_shared<SharedIOManager>(manager) : nullptr;
    const IIOManagerSource& io = shared ? static_cast<const IIOManagerSource&>(*shared) : *control;
    SearchWorkers workers(ports.size(), m_bParallel ? ports.size() : 1,
                          [&](std::size_t i, SearchWorkers& w) { ProbePort(ports[i], i, io, w); });
    try {
      FollowSearch(ports, workers, total);
    } catch (const Interrupted&) {
      // A stopped search keeps the rows found so far and offers nothing to apply.
      m_view.ShowProgress(total, total);
      SetWorking("");
      ShowList();
      throw;
    }
  }
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

  for (std::size_t i = 0; i < m_abFoundOnCOM.size(); ++i)
    if (m_abPresentCOM[i] && !m_abFoundOnCOM[i]) return OfferExclusions();
}

void Cvn73100PPSrchIO::OfferExclusions() {
  FrmSearchResults dialog;
  for (std::int32_t i = 0; i < FrmSearchResults::COM_PORT_COUNT; ++i) {
    dialog.SetInstrumentFoundOnCOMPort(i, m_abFoundOnCOM[static_cast<std::size_t>(i)]);
    dialog.SetCOMPortPresent(i, m_abPresentCOM[static_cast<std::size_t>(i)]);
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
