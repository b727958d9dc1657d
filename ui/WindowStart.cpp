#include "ui/WindowStart.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>
#include <cstdio>
#include <map>

#include "control/Cvn73100Scope.h"
#include "iolib/IOLibrary.h"
#include "platform/ScopeError.h"
#include "server/Cvn73100Server.h"
#include "simulator/Backend.h"
#include "ui/Cvn73100ScopeWidget.h"
#include "ui/ScopeMainWindow.h"
#include "ui/UiText.h"

namespace cvn73100::ui {

void RegisterComponents() {
  io::RegisterIOLibrary();
  sim::RegisterBackend();
  server::RegisterAutomationServer();
}

bool ApplyCountryOption(ScopeMainWindow& window, const QString& value, const char* program) {
  bool ok = false;
  const int code = value.toInt(&ok);
  try {
    if (!ok) throw InvalidPropertyValue();
    window.Scope().SetCountryCode(code);
    window.ScopeWidget().Refresh();
    return true;
  } catch (const ScopeError& error) {
    std::fprintf(stderr, "%s: --country %s: %s\n", program, qPrintable(value),
                 qPrintable(FromSystem(error.Description())));
    return false;
  }
}

void TranslateQtTexts(int countryCode) {
  static const std::map<int, QLocale> locales{
      {33, QLocale(QLocale::French, QLocale::France)},  {34, QLocale(QLocale::Spanish, QLocale::Spain)},
      {39, QLocale(QLocale::Italian, QLocale::Italy)},  {49, QLocale(QLocale::German, QLocale::Germany)},
      {81, QLocale(QLocale::Japanese, QLocale::Japan)}, {82, QLocale(QLocale::Korean, QLocale::SouthKorea)},
      {886, QLocale(QLocale::Chinese, QLocale::Taiwan)}};
  const auto found = locales.find(countryCode);
  const QLocale locale = found == locales.end() ? QLocale(QLocale::English, QLocale::UnitedStates) : found->second;
  static QTranslator qtTexts;  // lives as long as the application that uses it
  if (qtTexts.load(locale, "qtbase", "_", QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
    QApplication::installTranslator(&qtTexts);
  }
}

}  // namespace cvn73100::ui
