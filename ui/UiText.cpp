#include "ui/UiText.h"

#include "dialogs/AutoCenter.h"
#include "platform/ScopeError.h"

namespace cvn73100::ui {

void ShowError(WindowHandle owner, const std::exception& error) {
  constexpr int STYLE = MsgBoxStyle::OKOnly | MsgBoxStyle::Exclamation | MsgBoxStyle::SetForeground;
  if (const auto* scopeError = dynamic_cast<const ScopeError*>(&error)) {
    AutoCenter::MsgBoxAutoCenter(owner, scopeError->Description(), STYLE, scopeError->Source());
  } else {
    AutoCenter::MsgBoxAutoCenter(owner, error.what(), STYLE, Messages::Load(104));
  }
}

}  // namespace cvn73100::ui
