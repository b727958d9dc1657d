#pragma once
#include <string>
#include <vector>

#include "cli/CliContext.h"
#include "setups/ISetupsPageView.h"

namespace cvn73100 {

class Cvn73100PPSetup;
class Cvn73100Scope;

// The Setups page on a terminal. The command line fills in the Add / Edit form (PrepareForm) the way a
// user would type it, and the form's own validation decides whether it closes; the list is kept for the
// command to look up rows by name.
class ConsoleSetupsView : public ISetupsPageView {
 public:
  WindowHandle Window() const override { return CONSOLE_WINDOW; }
  void ShowRows(const std::vector<SetupRow>& rows, int selectedRow) override;
  void EnableButtons(const SetupsPageButtons&) override {}
  void SetFont(const std::string&, int) override {}
  void ShowSetupForm(FrmSetup& form) override;
  void ShowPopupMenu(FrmSetupMenu&) override {}
  void SetChanged(bool) override {}

  // What the next Add / Edit form receives before OK is pressed.
  void PrepareForm(const std::string& name, const std::string& comments, bool getFromInstrument);

  const std::vector<SetupRow>& Rows() const { return m_rows; }
  // The row of setup `name` (case ignored), -1 when none.
  int RowOf(const std::string& name) const;

 private:
  std::vector<SetupRow> m_rows;
  std::string m_name;
  std::string m_comments;
  bool m_getFromInstrument = true;
};

// Binds `page` to `control` the way the property frame does.
void BindSetupsPage(Cvn73100PPSetup& page, Cvn73100Scope& control);

}  // namespace cvn73100
