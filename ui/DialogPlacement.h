#pragma once
#include <QRect>

#include "platform/Host.h"

class QWidget;

namespace cvn73100::ui {

// Screen rectangles in the control's terms and back.
Rect ToRect(const QRect& rect);
QRect ToQRect(const Rect& rect);

// Moves the top-level `dialog` (already laid out) so that it is centred over `parent`'s window, or over
// the screen when there is none, and lies within the screen. Its size is kept.
void PlaceOverParentWithinScreen(QWidget* dialog, QWidget* parent);

}  // namespace cvn73100::ui
