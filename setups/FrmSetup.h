#pragma once
#include <string>

#include "platform/Host.h"

namespace cvn73100 {

// The Add New Setup / Edit Setup dialog: a name, comments and (when adding) the "Get Setup From
// Instrument" check box. A front end draws the fields, writes the user's edits back through the
// setters and forwards the OK and Cancel clicks; the form decides whether it may close.
class FrmSetup {
 public:
  enum class Purpose { Add, Edit };
  enum class Result { Open, OK, Cancel };

  // Fills the form and opens it again: title "Add New Setup" or "Edit Setup", the texts to edit and
  // the check box. The check box is offered only when adding.
  void Update(Purpose purpose, const std::string& name, const std::string& comments, bool getSetupFromInstrument);

  Purpose GetPurpose() const { return m_purpose; }
  // Texts in the current language.
  std::string Caption() const;
  static std::string NameLabel();
  static std::string CommentsLabel();
  static std::string CheckBoxCaption();
  static std::string OKCaption();
  static std::string CancelCaption();
  bool CheckBoxVisible() const { return m_purpose == Purpose::Add; }

  const std::string& Name() const { return m_strName; }
  void SetName(const std::string& name) { m_strName = name; }
  const std::string& Comments() const { return m_strComments; }
  void SetComments(const std::string& comments) { m_strComments = comments; }
  bool GetSetupFromInstrument() const { return m_bGetSetupFromInstrument; }
  void SetGetSetupFromInstrument(bool value) { m_bGetSetupFromInstrument = value; }

  // The window that owns the format messages: the page sets its own, a front end that draws the form
  // as a window of its own may set that one.
  WindowHandle Window() const { return m_hwnd; }
  void SetWindow(WindowHandle hwnd) { m_hwnd = hwnd; }

  // Closes the form with OK when the name and comments are acceptable. Otherwise shows why (an empty
  // name: "Error.  You must specify a setup name."; a name holding " " or "|"; comments holding "|")
  // and leaves the form open. Returns whether the form closed.
  bool CommandOK_Click();
  void CommandCancel_Click() { m_result = Result::Cancel; }

  // Open until OK or Cancel closes the form.
  Result GetResult() const { return m_result; }
  bool IsOpen() const { return m_result == Result::Open; }

 private:
  Purpose m_purpose = Purpose::Add;
  std::string m_strName;
  std::string m_strComments;
  bool m_bGetSetupFromInstrument = true;
  WindowHandle m_hwnd = 0;
  Result m_result = Result::Open;
};

}  // namespace cvn73100
