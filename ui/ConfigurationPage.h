#pragma once
#include <memory>

#include "ui/PropertyPage.h"

class QShowEvent;

namespace cvn73100 {
class CIOconfiguration;
}

namespace cvn73100::ui {

// A page that edits a working copy of the control's I/O configuration (Search Criteria, Set I/O). The copy is
// taken when the page is bound, and again whenever the page is shown without edits of its own, so that what
// another page has applied meanwhile is what it shows.
class ConfigurationPage : public PropertyPage {
  Q_OBJECT
 public:
  using PropertyPage::PropertyPage;

  void SelectionChanged() override { TakeControlConfiguration(); }
  bool Changed() const override { return m_changed; }
  // The working copy (null until bound).
  const CIOconfiguration* Configuration() const { return m_config.get(); }

 protected:
  void showEvent(QShowEvent* event) override;
  // Draws the working copy.
  virtual void Fill() = 0;
  // Replaces the working copy with the control's configuration as it is now.
  void TakeControlConfiguration();

  std::shared_ptr<CIOconfiguration> m_config;
  bool m_changed = false;
  // Set while Fill draws, so that the widgets' change signals are not taken for edits.
  bool m_filling = false;
};

}  // namespace cvn73100::ui
