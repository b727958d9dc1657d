#pragma once
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "connection/CQueryInstrument.h"
#include "discovery/ISearchInstrumentsView.h"
#include "discovery/SearchWorkers.h"

namespace cvn73100 {

class CIOconfiguration;
class IPPCvn73100Scope;

// The "Search Instruments" property page: finds every instrument that answers "*IDN?" on the COM ports
// and GPIB interfaces the I/O configuration includes, lists them, tests one address, and hands the
// chosen address back to the control.
//
// A front end drives it like this:
//   Cvn73100PPSrchIO page(view);              // the discovery timer is on from the start
//   page.PropertyPage_Paint();                // the view draws the whole state and starts the timer
//   page.PropertyPage_SelectionChanged(&control);
//   page.TimerInstrumentDiscovery_Timer();    // on the timer's tick (a console may call it at once)
//   page.Search_Click();                      // long: progress through the view, Host::ProcessEvents
//   page.ListViewInstruments_ItemClick(row);  // optional: choose another row
//   page.PropertyPage_ApplyChanges();         // the chosen row becomes the control's address
// The view is called on the caller's thread only. A search probes its ports on worker threads (one, or one per
// port with ParallelSearch) while the caller's thread shows their progress and lets the host process its events
// at least every 50 ms. While a search runs, the page ignores a second Search, Test and Apply that the host's
// event processing may deliver.
//
// Broken invariants are reported to CDebug with class "Cvn73100PPSrchIO" and execution goes on.
class Cvn73100PPSrchIO {
 public:
  static constexpr const char* CLASS_NAME = "Cvn73100PPSrchIO";
  static constexpr const char* CONNECTED_INSTRUMENT_ICON = "ConnectedInstrument";
  // How long the page waits for its control before giving up (ms).
  static constexpr std::int32_t MAX_DISCOVERY_DELAY = 3000;
  static constexpr std::int32_t DISCOVERY_TIMER_INTERVAL = 100;
  static constexpr std::int32_t IDLE_TIMER_INTERVAL = 500;
  static constexpr int MOUSE_POINTER_DEFAULT = 0;
  static constexpr int MOUSE_POINTER_HOURGLASS = 11;
  // Style of the could-not-open box: information icon, OK, brought to the foreground.
  static constexpr int PORT_BOX_STYLE = MsgBoxStyle::OKOnly | MsgBoxStyle::Information | MsgBoxStyle::SetForeground;
  // The include mask of one GPIB interface has one bit per address 0..30.
  static constexpr std::int64_t LARGEST_MASK_VALUE = 0x7FFFFFFF;

  // PropertyPage_Initialize: a query object with the default delay and no I/O manager, and the
  // discovery timer on. Does not call the view yet. `view` must outlive the page.
  explicit Cvn73100PPSrchIO(ISearchInstrumentsView& view);
  ~Cvn73100PPSrchIO();
  Cvn73100PPSrchIO(const Cvn73100PPSrchIO&) = delete;
  Cvn73100PPSrchIO& operator=(const Cvn73100PPSrchIO&) = delete;

  // --- Page events. ---

  // Binds the page to `control` (the frame's selected control; it must outlive the binding): a
  // working copy of its I/O configuration, the query initialised with its TXDelay and IOManager, and
  // its InitialSearchMode as the first-search flag (the first search then offers row 1 for Apply when
  // no row is connected). A null control is reported and leaves the page unbound.
  void PropertyPage_SelectionChanged(IPPCvn73100Scope* control);
  // Hands the selected row's address (its reply becoming AddressInstrumentID) and the working I/O
  // configuration to the control, then runs the RS-232 handshake check for the result. Does nothing
  // while any of the control's page flags SearchIOExists, SearchCriteriaExists, SetIOExists and
  // SetupsExists is set.
  void PropertyPage_ApplyChanges();
  // Hands the view the whole state: rows and selection, texts, buttons, pointer, changed flag, timers.
  void PropertyPage_Paint();
  // Stops both timers and lets go of the control.
  void PropertyPage_Terminate();
  // Searches every included port; the list, the connected row and the texts show the outcome. An
  // unexpected query code raises error 380 (description message 109 or 110 with the address) and
  // ends the search; a failure of the I/O configuration or the channel set-up also ends it.
  // A check of Interrupt that says stop ends the search within about 100 ms with Interrupted: the rows
  // found so far stay listed, nothing is selected, marked or offered for Apply.
  void Search_Click();
  // Queries the selected row's address again with the query's Test (its message box included) and
  // lists the row anew from the reply.
  void Test_Click();
  // The user selected row `row` (1-based): it becomes the row Apply hands to the control.
  void ListViewInstruments_ItemClick(std::int32_t row);
  // A double click tests the selected row.
  void ListViewInstruments_DblClick();
  // Waits for the binding: after MAX_DISCOVERY_DELAY without a control it raises error 380 with source
  // message 210 and description message 216; once bound it shows the guidance text.
  void TimerInstrumentDiscovery_Timer();
  // Follows a change of the control's address made elsewhere (another page or the program).
  void TimerIdleProcessing_Timer();

  // Lists a row made from `reply` at 1-based `position` (-1 appends). Manufacturer and model are the
  // reply's first two comma-separated fields ("Unknown" when missing, a leading "MODEL" word dropped);
  // a GPIB address is shown without its resource class. An empty address, a GPIB address without two
  // "::" or a position outside the list raises error 380 (messages 104/106) after reporting it.
  void AddInstrumentToList(const std::string& reply, const std::string& address, std::int32_t position);

  // --- State, for the view and for scripts. ---

  const std::vector<InstrumentRow>& Rows() const { return m_rows; }
  // The selected row, 1-based; -1 when none.
  std::int32_t SelectedIndex() const { return m_lSelectedIndex; }
  const std::string& WorkingText() const { return m_strWorkingText; }
  const std::string& MessageText() const { return m_strMessageText; }
  bool MessageVisible() const { return m_bMessageVisible; }
  bool TestEnabled() const { return m_bTestEnabled; }
  int MousePointer() const { return m_iMousePointer; }
  bool Searching() const { return m_bSearching; }
  bool Changed() const { return m_bChanged; }
  bool FirstSearch() const { return m_bFirstSearch; }
  bool Bound() const { return m_cioconfiguration != nullptr; }
  bool TimerEnabled(SearchPageTimer timer) const;
  // Time spent waiting for the binding (ms).
  std::int32_t DiscoveryDelay() const { return m_lDiscoveryDelay; }
  // Whether a search probes each COM port and each GPIB board on a thread of its own (the list is the same).
  bool ParallelSearch() const { return m_bParallel; }
  void SetParallelSearch(bool parallel) { m_bParallel = parallel; }
  // From the last search: whether COM1..COM4 (index 0..3) gave a reply.
  const std::array<bool, 4>& InstrumentFoundOnCOM() const { return m_abFoundOnCOM; }
  // The working copy of the control's I/O configuration; null until bound.
  std::shared_ptr<const CIOconfiguration> Configuration() const { return m_cioconfiguration; }
  std::int32_t TXDelay() const { return m_lTXDelay; }

  // --- The page's fixed texts in the current language. ---

  static std::string PageCaption();                   // "Search Instruments"
  static std::array<std::string, 4> ColumnHeaders();  // "Model", "X", "Address", "Manufacturer"
  static std::string SupportedCaption();              // "\"X\" indicates supported instrument."
  static std::string TestCaption();                   // "Test"
  static std::string SearchCaption();                 // "Search"

 private:
  // The control, after reporting the broken invariants a page event checks; null when unbound.
  IPPCvn73100Scope* SelectedControl(const char* procedure) const;
  // Makes a fresh working copy of the control's I/O configuration and hands it to the query.
  void TakeControlConfiguration(IPPCvn73100Scope& control);
  // One COM port, or one GPIB board with its included addresses, probed in order by one worker.
  struct SearchPort {
    std::int32_t rs232 = 0;   // COM port number; unused for a board
    std::int32_t board = -1;  // GPIB board number, -1 for a COM port
    std::string name;         // "COM2", "GPIB0"
    std::vector<std::string> addresses;
  };
  void FindPorts(IPPCvn73100Scope& control);
  std::vector<SearchPort> PlanSearch() const;
  void ProbePort(const SearchPort& port, std::size_t index, const IIOManagerSource& io, SearchWorkers& workers) const;
  // Shows the workers' progress and lists what they found in port order until every port is done. A request to
  // stop (Interrupted) stops the workers, lists what they found so far and passes on.
  void FollowSearch(const std::vector<SearchPort>& ports, SearchWorkers& workers, std::int32_t total);
  // Lists `events` of `port`; true once the port ended. A port's failure or an unexpected query code raises,
  // unless the search was `stopped`: then only rows are listed.
  bool MergePort(const SearchPort& port, const std::vector<SearchEvent>& events, bool stopped);
  void ShowInFlight(const std::vector<std::string>& addresses);
  std::int32_t ProbeCount() const;
  void ShowPortNotOpened(const std::string& address, const std::string& cause);
  void OfferExclusions();
  // The first row whose address is a prefix of `activeAddress`, or -1.
  std::int32_t FindConnectedRow(const std::string& activeAddress) const;
  // Gives the connected-instrument icon to `row` alone (-1: to none).
  void MarkConnected(std::int32_t row);
  void Select(std::int32_t row);
  void ShowList();
  void SetWorking(const std::string& text);
  void SetMessage(const std::string& text, bool visible);
  void SetTestEnabled(bool enabled);
  void SetMousePointer(int pointer);
  void SetChanged();
  void SetTimer(SearchPageTimer timer, bool enabled);
  void Refresh();
  void Busy();
  void CheckIncludeMasks() const;

  ISearchInstrumentsView& m_view;
  IPPCvn73100Scope* m_control = nullptr;
  std::shared_ptr<CIOconfiguration> m_cioconfiguration;
  CQueryInstrument m_cqueryinstrument;
  std::int32_t m_lDiscoveryDelay = 0;
  std::int32_t m_lSelectedIndex = -1;
  std::int32_t m_lTXDelay = CQueryInstrument::DEFAULT_TX_DELAY;
  bool m_bFirstSearch = false;
  std::array<bool, 4> m_abFoundOnCOM{};
  // From the last search: whether each COM port's device is there (the results dialog names only those).
  std::array<bool, 4> m_abPresentCOM{};
  bool m_bParallel = false;
  // The control's address when the page last looked, to notice a change made elsewhere.
  std::string m_strKnownAddress;

  std::vector<InstrumentRow> m_rows;
  std::string m_strWorkingText;
  std::string m_strMessageText;
  bool m_bMessageVisible = false;
  bool m_bTestEnabled = false;
  int m_iMousePointer = MOUSE_POINTER_DEFAULT;
  bool m_bSearching = false;
  bool m_bChanged = false;
  bool m_bDiscoveryTimer = false;
  bool m_bIdleTimer = false;
};

}  // namespace cvn73100
