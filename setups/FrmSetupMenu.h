#pragma once
#include <string>

#include "platform/Event.h"

namespace cvn73100 {

// The pop-up menu of the Setups list: Edit Setup and Copy Name. A front end draws the two entries and
// forwards the chosen one; the menu passes it on to the page as an event.
class FrmSetupMenu {
 public:
  // Entry texts in the current language.
  static std::string EditCaption();
  static std::string CopyCaption();

  bool EditEnabled() const { return m_bEditEnabled; }
  void SetEditEnabled(bool value) { m_bEditEnabled = value; }
  bool CopyEnabled() const { return m_bCopyEnabled; }
  void SetCopyEnabled(bool value) { m_bCopyEnabled = value; }

  // A click on a disabled entry does nothing.
  void Edit_Click();
  void Copy_Click();

  Event<> EditClick;
  Event<> CopyClick;

 private:
  bool m_bEditEnabled = false;
  bool m_bCopyEnabled = false;
};

}  // namespace cvn73100
