#include "cli/ConsoleSearchView.h"

#include <unistd.h>

#include <algorithm>
#include <iomanip>
#include <iostream>

#include "cli/CliText.h"
#include "cli/TextWidth.h"
#include "control/Cvn73100Scope.h"
#include "discovery/Cvn73100PPSrchIO.h"
#include "discovery/FrmSearchResults.h"
#include "ioconfig/IOConfigurationConstants.h"

namespace cvn73100 {
namespace {

constexpr int BAR_WIDTH = 30;

bool AskAtTerminal(std::ostream& out, const std::string& question, bool current) {
  out << question << (current ? " [Y/n] " : " [y/N] ") << std::flush;
  std::string answer;
  if (!std::getline(std::cin, answer) || answer.empty()) return current;
  return answer[0] == 'y' || answer[0] == 'Y' || answer[0] == 'o' || answer[0] == 'O';
}

}  // namespace

ConsoleSearchView::ConsoleSearchView(CliContext& context, SilentPorts silentPorts)
    : m_context(context), m_silentPorts(silentPorts), m_bar(context.progress || ::isatty(STDERR_FILENO) != 0) {}

void ConsoleSearchView::ShowRows(const std::vector<InstrumentRow>& rows, std::int32_t selectedRow) {
  m_rows = rows;
  m_selected = selectedRow;
}

void ConsoleSearchView::SetMessage(const std::string& text, bool visible) { m_message = visible ? text : ""; }

void ConsoleSearchView::ShowProgress(std::int32_t step, std::int32_t total) {
  std::ostream& err = m_context.err;
  if (m_bar) {
    if (step >= total) {
      if (m_barDrawn) err << "\r\033[K" << std::flush;
      m_barDrawn = false;
      return;
    }
    const int filled = total > 0 ? static_cast<int>(static_cast<long long>(BAR_WIDTH) * step / total) : 0;
    err << "\r\033[K[" << std::string(static_cast<std::size_t>(filled), '#')
        << std::string(static_cast<std::size_t>(BAR_WIDTH - filled), '.') << "] " << std::setw(3) << step << "/"
        << total << "  " << m_working << std::flush;
    m_barDrawn = true;
    return;
  }
  if (m_context.json || step >= total) return;
  err << "[" << std::setw(3) << step + 1 << "/" << total << "] " << m_working << "\n";
}

void ConsoleSearchView::ShowSearchResults(FrmSearchResults& dialog) {
  std::ostream& out = m_context.json ? m_context.err : m_context.out;
  if (m_barDrawn) ShowProgress(1, 1);
  out << "== " << ConsoleHost::ToTerminal(dialog.Caption()) << " ==\n"
      << ConsoleHost::ToTerminal(dialog.Heading()) << "\n"
      << ConsoleHost::ToTerminal(dialog.Explanation()) << "\n";

  const bool ask = m_silentPorts == SilentPorts::Ask && m_context.host.Interactive();
  for (std::int32_t i = 0; i < FrmSearchResults::COM_PORT_COUNT; ++i) {
    if (!dialog.CheckEnabled(i)) continue;
    const bool checked = dialog.CheckValue(i) == FrmSearchResults::CHECKED;
    bool exclude = checked;
    if (m_silentPorts == SilentPorts::Exclude) {
      exclude = true;
    } else if (ask) {
      exclude = AskAtTerminal(out,
                              ConsoleHost::ToTerminal(dialog.FrameCaption()) + ": " + FrmSearchResults::CheckCaption(i) +
                                  "?",
                              checked);
    }
    dialog.CheckCOM1_Click(i, exclude ? FrmSearchResults::CHECKED : FrmSearchResults::UNCHECKED);
  }
  dialog.CommandContinue_Click();

  m_excluded.clear();
  for (std::int32_t i = 0; i < FrmSearchResults::COM_PORT_COUNT; ++i)
    if (!dialog.IncludedCOMPort(i)) m_excluded.push_back(FrmSearchResults::CheckCaption(i));
  out << ConsoleHost::ToTerminal(dialog.FrameCaption()) << ": ";
  if (m_excluded.empty()) out << "-";
  for (std::size_t i = 0; i < m_excluded.size(); ++i) out << (i ? ", " : "") << m_excluded[i];
  out << "\n\n";
}

void RunSearch(Cvn73100PPSrchIO& page, Cvn73100Scope& control) {
  page.PropertyPage_SelectionChanged(&control);
  page.TimerInstrumentDiscovery_Timer();
  page.Search_Click();
}

std::string FullAddressOfRow(const std::string& rowAddress) {
  if (rowAddress.rfind(GPIB_PREFIX, 0) != 0) return rowAddress;
  return rowAddress + ADDRESS_SEPARATOR + RESOURCE_CLASS;
}

std::vector<TableRow> TableRows(const std::vector<InstrumentRow>& rows, bool all) {
  std::vector<TableRow> table;
  for (const auto& row : rows) {
    if (!all && row.reply.empty()) continue;
    table.push_back(TableRow{static_cast<std::int32_t>(table.size()) + 1, row, FullAddressOfRow(row.address)});
  }
  return table;
}

void PrintSearchTable(std::ostream& out, const std::vector<TableRow>& table, std::size_t silentCount, bool all) {
  const auto headers = Cvn73100PPSrchIO::ColumnHeaders();
  const auto shown = [](const std::string& text) { return ConsoleHost::ToTerminal(text); };
  TextTable columns;
  columns.Add({"", shown(headers[0]), shown(headers[1]), shown(headers[2]), shown(headers[3])});
  for (const auto& entry : table) {
    const bool connected = entry.row.icon == Cvn73100PPSrchIO::CONNECTED_INSTRUMENT_ICON;
    std::string number = std::to_string(entry.number);
    number.insert(0, number.size() < 3 ? 3 - number.size() : 0, ' ');
    columns.Add({(connected ? "*" : " ") + number, shown(entry.row.model), entry.row.supported, entry.row.address,
                 shown(entry.row.manufacturer)});
  }
  columns.Print(out);
  out << ConsoleHost::ToTerminal(Cvn73100PPSrchIO::SupportedCaption()) << "\n";
  if (!all && silentCount > 0) {
    out << (silentCount == 1 ? CliText(CliMsg::SILENT_ADDRESS)
                             : CliText(CliMsg::SILENT_ADDRESSES, {std::to_string(silentCount)}))
        << " ";
  }
  out << CliText(CliMsg::MARKS_CONTROL_ADDRESS) << "\n";
}

}  // namespace cvn73100
