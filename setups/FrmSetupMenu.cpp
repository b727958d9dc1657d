#include "setups/FrmSetupMenu.h"

#include "dialogs/Messages.h"

namespace cvn73100 {
namespace {
constexpr int MSG_EDIT_SETUP = 640;
constexpr int MSG_COPY_NAME = 641;
}  // namespace

std::string FrmSetupMenu::EditCaption() { return Messages::Load(MSG_EDIT_SETUP); }
std::string FrmSetupMenu::CopyCaption() { return Messages::Load(MSG_COPY_NAME); }

void FrmSetupMenu::Edit_Click() {
  if (m_bEditEnabled) EditClick.Raise();
}

void FrmSetupMenu::Copy_Click() {
  if (m_bCopyEnabled) CopyClick.Raise();
}

}  // namespace cvn73100
