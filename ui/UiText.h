#pragma once
#include <QString>
#include <exception>
#include <string>

#include "dialogs/Messages.h"
#include "platform/Host.h"

namespace cvn73100::ui {

// The system's texts are UTF-8 with CR LF line ends; Qt labels break lines at LF alone.
inline QString FromSystem(const std::string& text) {
  QString converted = QString::fromStdString(text);
  converted.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
  return converted;
}

// Catalogue message `number` in the current language, ready for a label.
inline QString Msg(int number) { return FromSystem(Messages::Load(number)); }

// Shows an error that a page event raised in a box centred over `owner`: the error's description,
// titled with its source (a ScopeError), or the bare text under the control's name.
void ShowError(WindowHandle owner, const std::exception& error);

}  // namespace cvn73100::ui
