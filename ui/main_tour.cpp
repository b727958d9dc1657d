// cvnscope-tour: pictures of the window, every property page and every dialog of cvnscope-gui, for the
// documentation (see ScreenshotTour).
#include <QApplication>
#include <QCommandLineParser>
#include <map>

#include "control/Cvn73100Scope.h"
#include "ui/QtHost.h"
#include "ui/ScopeMainWindow.h"
#include "ui/ScreenshotTour.h"
#include "ui/WindowStart.h"

using namespace cvn73100;

namespace {

// The suffix of the picture names for each language the control speaks.
QString LanguageSuffix(int countryCode) {
  static const std::map<int, const char*> suffixes{{1, "en"},  {33, "fr"}, {34, "es"}, {39, "it"},
                                                   {49, "de"}, {81, "ja"}, {82, "ko"}, {886, "zh-tw"}};
  const auto found = suffixes.find(countryCode);
  return found == suffixes.end() ? QString::number(countryCode) : QString(found->second);
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QCoreApplication::setApplicationName("cvnscope-tour");
  QCoreApplication::setApplicationVersion(QString::fromStdString(Cvn73100Scope::Version()));
  QCommandLineParser parser;
  parser.setApplicationDescription(
      "Walks through cvnscope-gui's window, every page and every dialog, saves a picture of each in DIR and quits. "
      "Starts from a new form unless --form is given, and never writes the form back (the result goes to "
      "DIR/form.json).");
  parser.addHelpOption();
  parser.addVersionOption();
  const QCommandLineOption form{"form", "The form file to start from (read only).", "PATH"};
  const QCommandLineOption country{"country", "Language of the control by country code.", "CODE"};
  parser.addOptions({form, country});
  parser.addPositionalArgument("DIR", "Folder for the pictures.");
  parser.process(application);
  if (parser.positionalArguments().size() != 1) parser.showHelp(2);

  ui::RegisterComponents();
  ui::QtHost host;
  host.Install();
  ui::ScopeMainWindow window(parser.isSet(form) ? parser.value(form) : QString());
  if (parser.isSet(country) && !ui::ApplyCountryOption(window, parser.value(country), "cvnscope-tour")) return 2;
  ui::TranslateQtTexts(static_cast<int>(window.Scope().CountryCode()));
  window.SetSaveOnClose(false);
  window.show();
  ui::ScreenshotTour tour(window, parser.positionalArguments().front(),
                          LanguageSuffix(static_cast<int>(window.Scope().CountryCode())));
  tour.Start();
  return QApplication::exec();
}
