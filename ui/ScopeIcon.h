#pragma once
#include <QIcon>
#include <QPixmap>

namespace cvn73100::ui {

// The small instrument picture that marks the setup the instrument holds ("CurrentScopeSetup"): a
// scope screen with a trace. Drawn, not loaded, so it scales to any size and needs no resource file.
QPixmap ScopeIconPixmap(int size, qreal devicePixelRatio = 1.0);
QIcon ScopeIcon();
// A transparent icon of the same size, for rows without the mark, so that every row's text starts at
// the same column.
QIcon BlankIcon();

}  // namespace cvn73100::ui
