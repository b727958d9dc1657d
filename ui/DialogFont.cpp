#include "ui/DialogFont.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <cmath>
#include <exception>
#include <string>

#include "dialogs/Messages.h"

namespace cvn73100::ui {

QFont DialogFont(const std::string& name, int pointSize) {
  QFont font = QApplication::font();
  if (!name.empty()) {
    const QString family = QString::fromStdString(name);
    if (QFontDatabase::hasFamily(family)) {
      font.setFamilies({family});
    } else {
      // Keep the application's family behind the missing one, so the fallback is the desktop font
      // rather than whatever the font matcher ranks first.
      font.setFamilies({family, QApplication::font().family()});
    }
  }
  if (pointSize > 0) font.setPointSize(pointSize);
  return font;
}

int LatinTextWidth(const QFont& font, int chars) {
  static const QString sample = QStringLiteral("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ");
  const QFontMetricsF metrics(font);
  return static_cast<int>(std::ceil(metrics.horizontalAdvance(sample) / sample.size() * chars));
}

QFont LanguageFont() {
  const std::string size = Messages::Load(103);
  int points = 0;
  try {
    points = std::stoi(size);
  } catch (const std::exception&) {
    points = 0;
  }
  return DialogFont(Messages::Load(102), points);
}

}  // namespace cvn73100::ui
