#pragma once
#include <cstdint>
#include <string>

#include "platform/Host.h"

namespace cvn73100 {

// The message with an option not to show it again: what the dialog shows and what each button
// reports. A Qt or console face draws it and forwards the clicks; the host returns Result().
//
// Layout is the face's: the message label grows with its text and the buttons sit below it.
class FrmMessageOption {
 public:
  enum class Button { Continue, Cancel, OK };

  // Title, message, option text, the option's initial state and the button mode come from `request`.
  explicit FrmMessageOption(const MessageOptionRequest& request);

  // Takes the control's font; an empty name keeps the form's own font.
  void SetControlFont(const std::string& fontName, std::int16_t fontSize);
  // Empty (and 0) while the form keeps its own font.
  const std::string& FontName() const { return m_strFontName; }
  std::int16_t FontSize() const { return m_iFontSize; }

  // Fills the form as it is shown; an empty option text is reported as a broken invariant.
  void Discover();

  const std::string& Caption() const { return m_strCaption; }
  const std::string& Message() const { return m_strMessage; }
  const std::string& OptionText() const { return m_strOption; }
  // The check box.
  bool OptionChecked() const { return m_bOptionChecked; }
  void SetOptionChecked(bool checked) { m_bOptionChecked = checked; }

  // Continue and Cancel, or OK alone.
  bool IsVisible(Button button) const;
  // Message 116 "Continue", 112 "Cancel", 111 "OK" in the current language.
  std::string ButtonCaption(Button button) const;
  // The button the Escape key presses: Cancel with Continue and Cancel, otherwise OK.
  Button EscapeButton() const { return m_bContinueCancel ? Button::Cancel : Button::OK; }

  // A visible button reads the check box and closes the form; a hidden one does nothing.
  void Click(Button button);
  void PressEscape() { Click(EscapeButton()); }

  bool Closed() const { return m_bClosed; }
  // The button (MsgBoxResult::OK for OK and Continue, MsgBoxResult::Cancel for Cancel) and the
  // option's state when the form closed.
  const MessageOptionResult& Result() const { return m_result; }

 private:
  std::string m_strCaption;
  std::string m_strMessage;
  std::string m_strOption;
  bool m_bOptionChecked = false;
  bool m_bContinueCancel = false;
  std::string m_strFontName;
  std::int16_t m_iFontSize = 0;
  bool m_bClosed = false;
  MessageOptionResult m_result;
};

}  // namespace cvn73100
