#pragma once
#include <QString>

namespace cvn73100::ui {

class ScopeMainWindow;

// What cvnscope-gui and cvnscope-tour do alike before their window shows.

// The I/O library, the simulated instruments and the automation server, registered once.
void RegisterComponents();

// Sets the control's language from a --country value; false (and a message naming `program` on stderr) when
// the value is refused.
bool ApplyCountryOption(ScopeMainWindow& window, const QString& value, const char* program);

// Qt's own texts (file dialogs, standard buttons) in the control's language, where Qt's translations are installed.
void TranslateQtTexts(int countryCode);

}  // namespace cvn73100::ui
