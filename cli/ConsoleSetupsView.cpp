#include "cli/ConsoleSetupsView.h"

#include "control/Cvn73100Scope.h"
#include "setups/Cvn73100PPSetup.h"
#include "setups/FrmSetup.h"
#include "setups/SetupText.h"

namespace cvn73100 {

void ConsoleSetupsView::ShowRows(const std::vector<SetupRow>& rows, int) { m_rows = rows; }

void ConsoleSetupsView::ShowSetupForm(FrmSetup& form) {
  form.SetName(m_name);
  form.SetComments(m_comments);
  form.SetGetSetupFromInstrument(m_getFromInstrument);
  // The form shows why it refuses the texts; on a command line there is nobody to correct them.
  if (!form.CommandOK_Click()) form.CommandCancel_Click();
}

void ConsoleSetupsView::PrepareForm(const std::string& name, const std::string& comments, bool getFromInstrument) {
  m_name = name;
  m_comments = comments;
  m_getFromInstrument = getFromInstrument;
}

int ConsoleSetupsView::RowOf(const std::string& name) const {
  for (std::size_t i = 0; i < m_rows.size(); ++i)
    if (SetupText::EqualsIgnoreCase(m_rows[i].name, name)) return static_cast<int>(i);
  return -1;
}

void BindSetupsPage(Cvn73100PPSetup& page, Cvn73100Scope& control) {
  page.PropertyPage_Initialize();
  page.PropertyPage_SelectionChanged(control);
}

}  // namespace cvn73100
