#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "platform/Host.h"

namespace cvn73100 {

class FrmSearchResults;

// One row of the instrument list. The four columns as shown, the icon key beside the row, and the raw
// "*IDN?" reply the row was made from (kept for Apply's handshake check and for scripts).
struct InstrumentRow {
  std::string model;         // "Unknown" when the reply had no model field
  std::string supported;     // "X" (message 202) for a supported model, otherwise ""
  std::string address;       // "COM2", or a GPIB address without its resource class: "GPIB0::7"
  std::string manufacturer;  // "Unknown" when the reply had no comma
  std::string icon;          // "" or "ConnectedInstrument" for the address the control uses
  std::string reply;
  bool operator==(const InstrumentRow&) const = default;
};

// The page's two timers. The view runs them and calls the page's handler on every tick.
enum class SearchPageTimer { InstrumentDiscovery, IdleProcessing };

// What the Search Instruments page needs from whoever draws it (the Qt page, the console front end,
// a test). The page calls these on the caller's thread, also in the middle of a search; none of them
// may call back into the page except through the results dialog handed over.
class ISearchInstrumentsView {
 public:
  virtual ~ISearchInstrumentsView() = default;

  // The page window: owner of the page's message boxes and of the results dialog (0: none).
  virtual WindowHandle Window() const = 0;
  // The whole list in display order and the selected row (1-based, -1: none). Called after every
  // change of rows, icons or selection.
  virtual void ShowRows(const std::vector<InstrumentRow>& rows, std::int32_t selectedRow) = 0;
  // TextWorking: what is being probed now.
  virtual void SetWorkingText(const std::string& text) = 0;
  // TextMessage: guidance and outcome, and whether it is shown at all.
  virtual void SetMessage(const std::string& text, bool visible) = 0;
  virtual void EnableTest(bool enabled) = 0;
  // Whether the page holds changes that Apply would hand to the control (the frame's Apply button).
  virtual void SetChanged(bool changed) = 0;
  // Shows the search-results dialog modally: draws it, forwards the user's ticks and the Continue
  // button to it, and returns once it is closed.
  virtual void ShowSearchResults(FrmSearchResults& dialog) = 0;

  // --- Optional. ---

  // Scrolls row `row` (1-based) into view.
  virtual void EnsureVisible(std::int32_t row) { (void)row; }
  // The mouse pointer over the page: 0 the default, 11 the hourglass.
  virtual void SetMousePointer(int pointer) { (void)pointer; }
  // Repaints the page now; the page then lets the host process its events.
  virtual void Refresh() {}
  // Puts the focus on the Search button. May throw; the page ignores a failure.
  virtual void FocusSearch() {}
  // Starts (with its interval in ms) or stops one of the page's timers.
  virtual void SetTimer(SearchPageTimer timer, bool enabled, std::int32_t intervalMs) {
    (void)timer;
    (void)enabled;
    (void)intervalMs;
  }
  // A search has probed `step` of `total` addresses (COM ports and GPIB addresses); called before each
  // probe and once more with step == total at the end, so a terminal can draw a progress bar.
  virtual void ShowProgress(std::int32_t step, std::int32_t total) {
    (void)step;
    (void)total;
  }
};

}  // namespace cvn73100
