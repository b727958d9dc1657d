#include "ui/ConfigurationPage.h"

#include "control/Cvn73100Scope.h"

namespace cvn73100::ui {

void ConfigurationPage::TakeControlConfiguration() {
  Cvn73100Scope* control = SelectedControl();
  if (!control) return;
  const IPPCvn73100Scope& link = *control;
  m_config = link.IOConfigurationPropertyPage();
  m_changed = false;
  setEnabled(true);
  Fill();
  emit changed();
}

void ConfigurationPage::showEvent(QShowEvent* event) {
  PropertyPage::showEvent(event);
  if (!m_changed) TakeControlConfiguration();
}

}  // namespace cvn73100::ui
