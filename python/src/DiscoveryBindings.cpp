#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "connection/CQueryInstrument.h"
#include "discovery/Cvn73100PPSrchIO.h"
#include "discovery/FrmSearchResults.h"
#include "discovery/ISearchInstrumentsView.h"
#include "ioconfig/CIOconfiguration.h"
#include "ioconfig/IOConfigurationConstants.h"
#include "platform/Components.h"
#include "python/src/Bindings.h"
#include "python/src/Conversions.h"

namespace cvn73100::python {
namespace {

// The Search Instruments page with a script in front of it: the rows are kept for the caller, the question
// about silent COM ports is answered as the caller chose, and the progress goes to the caller's callback.
class ScriptSearchView : public ISearchInstrumentsView {
 public:
  ScriptSearchView(bool excludeSilentPorts, py::object progress)
      : m_excludeSilentPorts(excludeSilentPorts), m_progress(std::move(progress)) {}

  WindowHandle Window() const override { return 0; }
  void ShowRows(const std::vector<InstrumentRow>& rows, std::int32_t) override { m_rows = rows; }
  void SetWorkingText(const std::string& text) override { m_working = text; }
  void SetMessage(const std::string&, bool) override {}
  void EnableTest(bool) override {}
  void SetChanged(bool) override {}

  void ShowSearchResults(FrmSearchResults& dialog) override {
    for (std::int32_t i = 0; i < FrmSearchResults::COM_PORT_COUNT; ++i)
      if (dialog.CheckEnabled(i))
        dialog.CheckCOM1_Click(i, m_excludeSilentPorts ? FrmSearchResults::CHECKED : FrmSearchResults::UNCHECKED);
    dialog.CommandContinue_Click();
  }

  // A long search is where a script's user presses Ctrl-C, and where a progress callback may fail: either
  // ends the search here, with that exception.
  void ShowProgress(std::int32_t step, std::int32_t total) override {
    py::gil_scoped_acquire gil;
    if (PyErr_CheckSignals() != 0) throw py::error_already_set();
    if (!m_progress.is_none()) m_progress(step, total, Text(m_working));
  }

  const std::vector<InstrumentRow>& Rows() const { return m_rows; }

 private:
  bool m_excludeSilentPorts;
  py::object m_progress;
  std::vector<InstrumentRow> m_rows;
  std::string m_working;
};

// The list's address as an instrument address: a GPIB row gets its resource class back.
std::string FullAddress(const std::string& rowAddress) {
  if (rowAddress.rfind(GPIB_PREFIX, 0) != 0) return rowAddress;
  return rowAddress + ADDRESS_SEPARATOR + RESOURCE_CLASS;
}

ScopePtr NewScope() {
  auto control = std::make_shared<Cvn73100Scope>();
  control->AmbientChanged();
  return control;
}

py::list Search(const std::optional<ScopePtr>& given, bool includeSilent, bool excludeSilentPorts, bool apply,
                py::object progress, bool parallel) {
  const ScopePtr control = given ? *given : NewScope();
  ScriptSearchView view(excludeSilentPorts, std::move(progress));
  Cvn73100PPSrchIO page(view);
  page.SetParallelSearch(parallel);
  Wait([&] {
    // As the property frame drives the page: bind, let the binding timer tick, search, and on request OK.
    page.PropertyPage_SelectionChanged(control.get());
    page.TimerInstrumentDiscovery_Timer();
    try {
      page.Search_Click();
    } catch (...) {
      page.PropertyPage_Terminate();
      throw;
    }
    // The page searches on a working copy; without OK the control is left as it was. OK also applies the row the
    // page marked as the control's, found by the page's first-prefix rule (a silent GPIB0::1 row claims
    // GPIB0::12::INSTR).
    if (apply) page.PropertyPage_ApplyChanges();
    page.PropertyPage_Terminate();
  });

  const py::object rowClass = py::module_::import("cvn73100._types").attr("InstrumentRow");
  py::list rows;
  for (const InstrumentRow& row : page.Rows()) {
    if (!includeSilent && row.reply.empty()) continue;
    rows.append(rowClass(Text(row.model), !row.supported.empty(), Text(row.address), Text(row.manufacturer),
                         Text(row.reply), Text(FullAddress(row.address)),
                         row.icon == Cvn73100PPSrchIO::CONNECTED_INSTRUMENT_ICON));
  }
  return rows;
}

py::tuple QueryInstrument(const std::string& address, const std::optional<ScopePtr>& scope,
                          std::optional<std::int32_t> txDelay) {
  // The address's keywords become its port's line settings for this query only, as on the Test button.
  const auto configuration = scope ? (*scope)->IOConfigurationPropertyPage() : std::make_shared<CIOconfiguration>();
  configuration->SetActiveAddressString(address);
  const auto manager = scope ? (*scope)->IOManager() : Components::CreateIOManager();
  const std::int32_t delay = txDelay ? *txDelay : scope ? (*scope)->TXDelay() : CQueryInstrument::DEFAULT_TX_DELAY;
  std::string reply;
  const std::int16_t code = Wait([&] {
    CQueryInstrument query;
    query.Initialize(delay, configuration, manager);
    const std::string& canonical = configuration->ActiveAddressString();
    return configuration->ActivePortIsGPIB() ? query.GPIBIDNQuery(canonical, reply)
                                             : query.RS232IDNQuery(canonical, reply);
  });
  return py::make_tuple(EnumValue(static_cast<IDNQueryResult>(code)), Text(reply));
}

const char* SEARCH_DOC =
    "Searches every COM port and GPIB address the I/O configuration includes for instruments that answer "
    "\"*IDN?\" (the Search Instruments page) and returns the rows: InstrumentRow(model, supported, address, "
    "manufacturer, reply, full_address, connected). Only the addresses that answered, unless ``include_silent``.\n\n"
    "With ``scope`` the search works on a copy of that control's I/O configuration; without, on a new control's. "
    "``apply=True`` then does what OK on the property frame does: the ports found, and the COM ports without an "
    "instrument excluded from future searches when ``exclude_silent_ports``, go to the control, and so does the "
    "row the page marked as the control's (``connected``: the first row whose address begins the control's "
    "address; on a first search with initial_search_mode set, the first row). ``progress(step, total, text)`` is "
    "called before each address is probed; an exception there, or Ctrl-C, ends the search. ``parallel=True`` probes "
    "every COM port and GPIB board at the same time; the rows are the same.";

}  // namespace

void BindDiscovery(py::module_& m, ScopeClass& scope) {
  m.def("search", &Search, py::arg("scope") = py::none(), py::kw_only(), py::arg("include_silent") = false,
        py::arg("exclude_silent_ports") = false, py::arg("apply") = false, py::arg("progress") = py::none(),
        py::arg("parallel") = false, SEARCH_DOC);
  scope.def(
      "search",
      [](const ScopePtr& s, bool includeSilent, bool excludeSilentPorts, bool apply, py::object progress,
         bool parallel) { return Search(s, includeSilent, excludeSilentPorts, apply, std::move(progress), parallel); },
      py::kw_only(), py::arg("include_silent") = false, py::arg("exclude_silent_ports") = false,
      py::arg("apply") = false, py::arg("progress") = py::none(), py::arg("parallel") = false,
      "cvn73100.search(self, ...): the search with this control's I/O configuration.");

  m.def("query_instrument", &QueryInstrument, py::arg("address"), py::arg("scope") = py::none(), py::kw_only(),
        py::arg("tx_delay") = py::none(),
        ("Asks the instrument at ``address`` for its identity (\"*IDN?\") and returns ``(code, reply)``: an "
         "IDNQueryResult and the raw reply (\"\" when none came). A COM address's keywords set that port's line "
         "settings for this query. With ``scope`` its I/O configuration, I/O library and transmit delay are used. An "
         "invalid address raises ScopeError -2147221124 (\"" +
         CatalogueText(106) + "\").")
            .c_str());
  m.def(
      "classify_reply",
      [](const std::string& reply) { return static_cast<IDNQueryResult>(CQueryInstrument::IsValidInstrument(reply)); },
      py::arg("reply"),
      "The IDNQueryResult of a raw \"*IDN?\" reply: SUPPORTED, UNSUPPORTED_MODEL, NOT_FAMILY, NOT_IEEE4882 (no comma) "
      "or NO_RESPONSE (empty).");
  py::tuple models(CQueryInstrument::SUPPORTED_MODEL_COUNT);
  for (std::size_t i = 0; i < CQueryInstrument::SUPPORTED_MODEL_COUNT; ++i)
    models[i] = CQueryInstrument::SupportedModels()[i];
  m.attr("SUPPORTED_MODELS") = models;
}

}  // namespace cvn73100::python
