#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "cli/CliContext.h"
#include "discovery/ISearchInstrumentsView.h"

namespace cvn73100 {

class Cvn73100PPSrchIO;
class Cvn73100Scope;

// The Search Instruments page on a terminal: a live progress bar while the page searches (plain lines
// when the error stream is not a terminal), and the search-results question answered at the prompt or
// by the command's choice. The rows are kept for the command to print.
class ConsoleSearchView : public ISearchInstrumentsView {
 public:
  // What to answer for the COM ports on which no instrument was found.
  enum class SilentPorts { Ask, Exclude, Keep };

  ConsoleSearchView(CliContext& context, SilentPorts silentPorts);

  WindowHandle Window() const override { return CONSOLE_WINDOW; }
  void ShowRows(const std::vector<InstrumentRow>& rows, std::int32_t selectedRow) override;
  void SetWorkingText(const std::string& text) override { m_working = text; }
  void SetMessage(const std::string& text, bool visible) override;
  void EnableTest(bool) override {}
  void SetChanged(bool) override {}
  void ShowSearchResults(FrmSearchResults& dialog) override;
  void ShowProgress(std::int32_t step, std::int32_t total) override;

  const std::vector<InstrumentRow>& Rows() const { return m_rows; }
  std::int32_t SelectedRow() const { return m_selected; }
  // The page's outcome text ("Search Complete.") when it shows one, else "".
  const std::string& Message() const { return m_message; }
  // The COM ports the results dialog left excluded from future searches ("COM2"...).
  const std::vector<std::string>& ExcludedPorts() const { return m_excluded; }

 private:
  CliContext& m_context;
  SilentPorts m_silentPorts;
  bool m_bar;
  bool m_barDrawn = false;
  std::vector<InstrumentRow> m_rows;
  std::int32_t m_selected = -1;
  std::string m_working;
  std::string m_message;
  std::vector<std::string> m_excluded;
};

// Binds `page` to `control` the way the property frame does, lets the binding timer tick once and runs
// the search.
void RunSearch(Cvn73100PPSrchIO& page, Cvn73100Scope& control);

// A row of a printed search table: the page's row, its number in the table and the full address.
struct TableRow {
  std::int32_t number = 0;
  InstrumentRow row;
  std::string fullAddress;  // the address Apply takes: "GPIB0::7::INSTR", "COM1"
};

// The page's address column as an instrument address: a GPIB row gets its resource class back.
std::string FullAddressOfRow(const std::string& rowAddress);

// The rows the table shows: every row that answered, or every row with `all`. Numbered from 1.
std::vector<TableRow> TableRows(const std::vector<InstrumentRow>& rows, bool all);

// Prints the table with the page's column headers: number, Model, X, Address, Manufacturer, with "*" before
// the row of the control's address; then the X legend and how many addresses stayed silent.
void PrintSearchTable(std::ostream& out, const std::vector<TableRow>& table, std::size_t silentCount, bool all);

}  // namespace cvn73100
