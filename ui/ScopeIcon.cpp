#include "ui/ScopeIcon.h"

#include <QPainter>
#include <QPainterPath>
#include <cmath>

namespace cvn73100::ui {

QPixmap ScopeIconPixmap(int size, qreal devicePixelRatio) {
  QPixmap pixmap(QSize(size, size) * devicePixelRatio);
  pixmap.setDevicePixelRatio(devicePixelRatio);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);

  const qreal s = size;
  // The instrument's case, with the screen on the left and a column of knobs on the right.
  const QRectF body(0.5, s * 0.12, s - 1.0, s * 0.76);
  painter.setPen(QPen(QColor(60, 64, 72), 1.0));
  painter.setBrush(QColor(176, 184, 196));
  painter.drawRoundedRect(body, s * 0.1, s * 0.1);

  const QRectF screen(s * 0.12, s * 0.22, s * 0.58, s * 0.56);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(16, 40, 28));
  painter.drawRect(screen);

  painter.setBrush(QColor(70, 76, 88));
  const qreal knob = s * 0.12;
  painter.drawEllipse(QRectF(s * 0.77, s * 0.26, knob, knob));
  painter.drawEllipse(QRectF(s * 0.77, s * 0.52, knob, knob));

  // One period of a sine across the screen.
  QPainterPath trace;
  const int steps = 24;
  for (int i = 0; i <= steps; ++i) {
    const qreal t = static_cast<qreal>(i) / steps;
    const qreal x = screen.left() + t * screen.width();
    const qreal y = screen.center().y() - std::sin(t * 2.0 * M_PI) * screen.height() * 0.32;
    if (i == 0) {
      trace.moveTo(x, y);
    } else {
      trace.lineTo(x, y);
    }
  }
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(QColor(80, 255, 120), std::max<qreal>(1.0, s / 14.0), Qt::SolidLine, Qt::RoundCap));
  painter.drawPath(trace);
  return pixmap;
}

QIcon ScopeIcon() {
  QIcon icon;
  for (int size : {16, 24, 32, 48}) {
    icon.addPixmap(ScopeIconPixmap(size));
    icon.addPixmap(ScopeIconPixmap(size, 2.0));
  }
  return icon;
}

QIcon BlankIcon() {
  QPixmap pixmap(16, 16);
  pixmap.fill(Qt::transparent);
  return QIcon(pixmap);
}

}  // namespace cvn73100::ui
