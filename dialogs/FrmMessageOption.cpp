#include "dialogs/FrmMessageOption.h"

#include "diagnostics/CDebug.h"
#include "dialogs/Messages.h"

namespace cvn73100 {

FrmMessageOption::FrmMessageOption(const MessageOptionRequest& request)
    : m_strCaption(request.title),
      m_strMessage(request.message),
      m_strOption(request.option),
      m_bOptionChecked(request.optionChecked),
      m_bContinueCancel(request.continueCancel) {
  m_result.optionChecked = m_bOptionChecked;
}

void FrmMessageOption::SetControlFont(const std::string& fontName, std::int16_t fontSize) {
  if (fontName.empty()) return;
  m_strFontName = fontName;
  m_iFontSize = fontSize;
}

void FrmMessageOption::Discover() {
  CDebug::Instance().Assert(!m_strOption.empty(), "(Len(m_strOption) > 0)", "FrmMessageOption", "Discover", "");
}

bool FrmMessageOption::IsVisible(Button button) const {
  switch (button) {
    case Button::Continue:
    case Button::Cancel:
      return m_bContinueCancel;
    case Button::OK:
      return !m_bContinueCancel;
  }
  return false;
}

std::string FrmMessageOption::ButtonCaption(Button button) const {
  switch (button) {
    case Button::Continue:
      return Messages::Load(116);
    case Button::Cancel:
      return Messages::Load(112);
    case Button::OK:
      return Messages::Load(111);
  }
  return {};
}

void FrmMessageOption::Click(Button button) {
  if (m_bClosed || !IsVisible(button)) return;
  m_result.button = button == Button::Cancel ? MsgBoxResult::Cancel : MsgBoxResult::OK;
  m_result.optionChecked = m_bOptionChecked;
  m_bClosed = true;
}

}  // namespace cvn73100
