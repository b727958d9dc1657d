#include "setups/FrmSetup.h"

#include "dialogs/AutoCenter.h"
#include "dialogs/Messages.h"

namespace cvn73100 {
namespace {

constexpr int MSG_OK = 111;
constexpr int MSG_CANCEL = 112;
constexpr int MSG_ADD_NEW_SETUP = 620;
constexpr int MSG_EDIT_SETUP = 621;
constexpr int MSG_NAME_LABEL = 622;
constexpr int MSG_COMMENTS_LABEL = 623;
constexpr int MSG_GET_FROM_INSTRUMENT = 624;
constexpr int MSG_NAME_REQUIRED = 631;
constexpr int MSG_NAME_FORMAT_TITLE = 715;
constexpr int MSG_NAME_FORMAT = 716;
constexpr int MSG_COMMENT_FORMAT_TITLE = 717;
constexpr int MSG_COMMENT_FORMAT = 718;

constexpr int ERROR_BOX = MsgBoxStyle::OKOnly | MsgBoxStyle::Information | MsgBoxStyle::SetForeground;

bool Holds(const std::string& text, char c) { return text.find(c) != std::string::npos; }

}  // namespace

void FrmSetup::Update(Purpose purpose, const std::string& name, const std::string& comments,
                      bool getSetupFromInstrument) {
  m_purpose = purpose;
  m_strName = name;
  m_strComments = comments;
  m_bGetSetupFromInstrument = getSetupFromInstrument;
  m_result = Result::Open;
}

std::string FrmSetup::Caption() const {
  return Messages::Load(m_purpose == Purpose::Add ? MSG_ADD_NEW_SETUP : MSG_EDIT_SETUP);
}
std::string FrmSetup::NameLabel() { return Messages::Load(MSG_NAME_LABEL); }
std::string FrmSetup::CommentsLabel() { return Messages::Load(MSG_COMMENTS_LABEL); }
std::string FrmSetup::CheckBoxCaption() { return Messages::Load(MSG_GET_FROM_INSTRUMENT); }
std::string FrmSetup::OKCaption() { return Messages::Load(MSG_OK); }
std::string FrmSetup::CancelCaption() { return Messages::Load(MSG_CANCEL); }

bool FrmSetup::CommandOK_Click() {
  // The same rules the collection and the native setup file enforce, caught here so that the user can
  // correct the text instead of losing the dialog to an error.
  int title = 0;
  int text = 0;
  if (m_strName.empty()) {
    title = MSG_NAME_FORMAT_TITLE;
    text = MSG_NAME_REQUIRED;
  } else if (Holds(m_strName, ' ') || Holds(m_strName, '|')) {
    title = MSG_NAME_FORMAT_TITLE;
    text = MSG_NAME_FORMAT;
  } else if (Holds(m_strComments, '|')) {
    title = MSG_COMMENT_FORMAT_TITLE;
    text = MSG_COMMENT_FORMAT;
  }
  if (text != 0) {
    AutoCenter::MsgBoxAutoCenter(m_hwnd, Messages::Load(text), ERROR_BOX, Messages::Load(title));
    return false;
  }
  m_result = Result::OK;
  return true;
}

}  // namespace cvn73100
