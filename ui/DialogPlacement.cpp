#include "ui/DialogPlacement.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include "dialogs/AutoCenter.h"

namespace cvn73100::ui {

Rect ToRect(const QRect& rect) { return Rect{rect.left(), rect.top(), rect.width(), rect.height()}; }

QRect ToQRect(const Rect& rect) { return QRect(rect.left, rect.top, rect.width, rect.height); }

void PlaceOverParentWithinScreen(QWidget* dialog, QWidget* parent) {
  QScreen* screen = parent ? parent->screen() : dialog->screen();
  if (!screen) screen = QGuiApplication::primaryScreen();
  if (!screen) return;
  const QRect area = screen->geometry();
  const QRect over = parent ? parent->window()->frameGeometry() : area;
  // The screen may not start at 0,0 (a second monitor): place in screen coordinates, then shift back.
  const QRect box = dialog->frameGeometry();
  const Rect placed = AutoCenter::PlaceOnParentWithinScreen(
      ToRect(box.translated(-area.topLeft())), ToRect(over.translated(-area.topLeft())), area.width(), area.height());
  dialog->move(ToQRect(placed).topLeft() + area.topLeft());
}

}  // namespace cvn73100::ui
