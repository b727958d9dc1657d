#pragma once
#include <string>
#include <vector>

#include "platform/Host.h"

namespace cvn73100 {

class FrmSetup;
class FrmSetupMenu;

// One row of the Setups list: the setup's name, its comments and the icon key beside it ("" or
// "CurrentScopeSetup" for the setup last exchanged with the instrument).
struct SetupRow {
  std::string name;
  std::string comments;
  std::string icon;
  bool operator==(const SetupRow&) const = default;
};

// Which of the buttons that act on the selected setup may be pressed. Add and Open always may.
struct SetupsPageButtons {
  bool remove = false;
  bool getFromInstrument = false;
  bool sendToInstrument = false;
  bool sendToFile = false;
  bool operator==(const SetupsPageButtons&) const = default;
};

// The texts of the page in the current language.
struct SetupsPageCaptions {
  std::string page;             // "Setups"
  std::string nameColumn;       // "Name"
  std::string commentsColumn;   // "Comments"
  std::string add;              // "Add"
  std::string remove;           // "Remove"
  std::string instrumentFrame;  // "Instrument"
  std::string getFromInstrument;
  std::string sendToInstrument;
  std::string fileFrame;  // "File"
  std::string open;
  std::string saveAs;
  std::string setup;  // "Setup"
  static SetupsPageCaptions Load();
};

// What the Setups page needs from whoever draws it (the Qt page, the console front end, a test). The
// page calls these on the caller's thread; none of them calls back into the page except through the
// form and the menu handed over.
class ISetupsPageView {
 public:
  virtual ~ISetupsPageView() = default;

  // The page window: owner of the page's message boxes, dialogs and file dialogs (0: none).
  virtual WindowHandle Window() const = 0;
  // The whole list in display order and the selected row (-1: none). Called after every change.
  virtual void ShowRows(const std::vector<SetupRow>& rows, int selectedRow) = 0;
  virtual void EnableButtons(const SetupsPageButtons& buttons) = 0;
  // The control's font, for the list and the captions (size in points).
  virtual void SetFont(const std::string& name, int size) = 0;
  // Shows the Add / Edit form modally: draws it, writes the user's edits into it and forwards OK and
  // Cancel to it, and returns once the form is closed (the form's result). Returning while the form is
  // still open counts as Cancel.
  virtual void ShowSetupForm(FrmSetup& form) = 0;
  // Shows the pop-up menu at the pointer and, before returning, forwards the chosen entry (if any) to
  // the menu's Edit_Click or Copy_Click.
  virtual void ShowPopupMenu(FrmSetupMenu& menu) = 0;
  // Whether the page holds changes that Apply would hand to the control (the frame's Apply button).
  virtual void SetChanged(bool changed) = 0;
};

}  // namespace cvn73100
