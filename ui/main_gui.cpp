// cvnscope-gui: the control on a Qt form, with its property pages and dialogs, over the instrument
// the shared form file names (the embedded simulated one when no hardware is configured).
#include <QApplication>
#include <QCommandLineParser>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>
#include <cstdio>
#include <map>

#include "form/FormFile.h"
#include "control/Cvn73100Scope.h"
#include "dialogs/Messages.h"
#include "iolib/IOLibrary.h"
#include "platform/ScopeError.h"
#include "server/Cvn73100Server.h"
#include "simulator/Backend.h"
#include "ui/Cvn73100ScopeWidget.h"
#include "ui/QtHost.h"
#include "ui/QuitOnSignal.h"
#include "ui/ScopeMainWindow.h"
#include "ui/ScreenshotTour.h"
#include "ui/SetupsPage.h"
#include "ui/UiText.h"

using namespace cvn73100;

namespace {

// Qt's own texts (file dialogs, standard buttons) in the control's language, where Qt's translations
// are installed.
QLocale LocaleOf(int countryCode) {
  static const std::map<int, QLocale> locales{
      {33, QLocale(QLocale::French, QLocale::France)},  {34, QLocale(QLocale::Spanish, QLocale::Spain)},
      {39, QLocale(QLocale::Italian, QLocale::Italy)},  {49, QLocale(QLocale::German, QLocale::Germany)},
      {81, QLocale(QLocale::Japanese, QLocale::Japan)}, {82, QLocale(QLocale::Korean, QLocale::SouthKorea)},
      {886, QLocale(QLocale::Chinese, QLocale::Taiwan)}};
  const auto found = locales.find(countryCode);
  return found == locales.end() ? QLocale(QLocale::English, QLocale::UnitedStates) : found->second;
}

// The suffix of screenshot names for each language the control speaks.
QString LanguageSuffix(int countryCode) {
  static const std::map<int, const char*> suffixes{{1, "en"},  {33, "fr"}, {34, "es"}, {39, "it"},
                                                   {49, "de"}, {81, "ja"}, {82, "ko"}, {886, "zh-tw"}};
  const auto found = suffixes.find(countryCode);
  return found == suffixes.end() ? QString::number(countryCode) : QString(found->second);
}

// The command line of cvnscope-gui; `application` may be a QCoreApplication when only help is wanted.
struct CommandLine {
  QCommandLineParser parser;
  QCommandLineOption form{"form", "The form file that keeps the control's properties (shared with cvnscope).", "PATH"};
  QCommandLineOption country{
      "country", "Language of the control by country code (1, 33, 34, 39, 49, 81, 82, 886); kept in the form.", "CODE"};
  QCommandLineOption screenshot{
      "screenshot",
      "Walk through every page and dialog, save a picture of each in DIR and quit. Starts from a new form "
      "unless --form is given, and never writes the form back (the result goes to DIR/form.json).",
      "DIR"};

  explicit CommandLine(const QCoreApplication& application) {
    QCoreApplication::setApplicationName("cvnscope-gui");
    QCoreApplication::setApplicationVersion(QString::fromStdString(Cvn73100Scope::Version()));
    parser.setApplicationDescription(
        "The 73100 scope control on a Qt form: property pages, set-ups, waveform and screen image.\n"
        "With no I/O configuration the built-in simulated instrument answers on GPIB0.");
    parser.addHelpOption();
    parser.addVersionOption();
    try {
      form.setDefaultValue(QString::fromStdString(FormFile::DefaultPath()));
    } catch (const ScopeError&) {
      // No home folder: --form names the form.
    }
    parser.addOptions({form, country, screenshot});
    parser.process(application);
  }
};

// Help and the version need no display: answer them before the GUI application wants one.
bool AsksOnlyForText(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const QString arg = QString::fromLocal8Bit(argv[i]);
    if (arg == "-h" || arg == "--help" || arg == "--help-all" || arg == "-?" || arg == "-v" || arg == "--version") {
      return true;
    }
  }
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  if (AsksOnlyForText(argc, argv)) {
    QCoreApplication application(argc, argv);
    CommandLine commandLine(application);  // prints and exits
    return 0;
  }
  QApplication application(argc, argv);
  CommandLine commandLine(application);
  QCommandLineParser& parser = commandLine.parser;
  const QCommandLineOption& formOption = commandLine.form;
  const QCommandLineOption& countryOption = commandLine.country;
  const QCommandLineOption& screenshotOption = commandLine.screenshot;

  io::RegisterIOLibrary();
  sim::RegisterBackend();
  server::RegisterAutomationServer();
  ui::QtHost host;
  host.Install();

  // A screenshot tour starts from a new form unless it is given one: it adds setups of its own.
  const bool touring = parser.isSet(screenshotOption);
  ui::ScopeMainWindow window(touring && !parser.isSet(formOption) ? QString() : parser.value(formOption));
  if (parser.isSet(countryOption)) {
    bool ok = false;
    const int code = parser.value(countryOption).toInt(&ok);
    try {
      if (!ok) throw InvalidPropertyValue();
      window.Scope().SetCountryCode(code);
      window.ScopeWidget().Refresh();
    } catch (const ScopeError& error) {
      std::fprintf(stderr, "cvnscope-gui: --country %s: %s\n", qPrintable(parser.value(countryOption)),
                   qPrintable(ui::FromSystem(error.Description())));
      return 2;
    }
  }
  QTranslator qtTexts;
  if (qtTexts.load(LocaleOf(static_cast<int>(window.Scope().CountryCode())), "qtbase", "_",
                   QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
    QApplication::installTranslator(&qtTexts);
  }
  window.show();
  // Stopped by the session or by Ctrl-C, the program leaves as its window's close does: the form is saved.
  ui::QuitOnSignal quitOnSignal([&window] {
    QApplication::closeAllWindows();
    if (window.isVisible()) window.close();
    QApplication::quit();
  });

  if (touring) {
    window.SetSaveOnClose(false);
    ui::ScreenshotTour tour(window, parser.value(screenshotOption),
                            LanguageSuffix(static_cast<int>(window.Scope().CountryCode())));
    tour.Start();
    return QApplication::exec();
  }
  return QApplication::exec();
}
