// Identification replies as instruments send them ("*IDN?"), with the addresses they came from: the
// classification, the search list's row parsing and the test message built from both.
// Input: records of a position byte, the reply up to a line feed and the address up to a line feed.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "connection/CQueryInstrument.h"
#include "discovery/Cvn73100PPSrchIO.h"
#include "fuzz/FuzzInput.h"
#include "ioconfig/CIOconfiguration.h"

using namespace cvn73100;
using fuzz::Require;

namespace {

class NullView : public ISearchInstrumentsView {
 public:
  WindowHandle Window() const override { return 0; }
  void ShowRows(const std::vector<InstrumentRow>&, std::int32_t) override {}
  void SetWorkingText(const std::string&) override {}
  void SetMessage(const std::string&, bool) override {}
  void EnableTest(bool) override {}
  void SetChanged(bool) override {}
  void ShowSearchResults(FrmSearchResults&) override {}
};

constexpr int MAX_ROWS = 64;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::FuzzInput in(data, size);
  NullView view;
  Cvn73100PPSrchIO page(view);
  CQueryInstrument query;
  query.Initialize(CQueryInstrument::DEFAULT_TX_DELAY, std::make_shared<CIOconfiguration>(), nullptr);

  for (int record = 0; record < MAX_ROWS && in.Remaining() > 0; ++record) {
    const std::uint8_t where = in.Byte();
    const std::string reply = in.Line();
    const std::string address = in.Line();

    const std::int16_t code = CQueryInstrument::IsValidInstrument(reply);
    Require(code >= IDNSupported && code <= IDNNoResponse, "a reply classified outside 0..4");
    try {
      query.TestMessage(code, address, reply);
    } catch (const ScopeError&) {
    }

    const auto rows = static_cast<std::int32_t>(page.Rows().size());
    // Mostly appended; otherwise a position from 0 to two past the end, both ends being refused.
    const std::int32_t position = where < 128 ? -1 : (where - 128) % (rows + 3);
    try {
      page.AddInstrumentToList(reply, address, position);
    } catch (const ScopeError&) {
      Require(static_cast<std::int32_t>(page.Rows().size()) == rows, "a refused row changed the list");
      continue;
    }
    Require(static_cast<std::int32_t>(page.Rows().size()) == rows + 1, "an accepted row is not listed once");
    const InstrumentRow& row = page.Rows()[static_cast<std::size_t>(position < 0 ? rows : position - 1)];
    Require(row.reply == reply && address.compare(0, row.address.size(), row.address) == 0,
            "the row does not come from its reply and address");
  }
  return 0;
}
