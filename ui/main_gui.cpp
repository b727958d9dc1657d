// cvnscope-gui: the control on a Qt form, with its property pages and dialogs, over the instrument
// the shared form file names (the embedded simulated one when no hardware is configured).
#include <QApplication>
#include <QCommandLineParser>

#include "control/Cvn73100Scope.h"
#include "form/FormFile.h"
#include "platform/ScopeError.h"
#include "ui/QtHost.h"
#include "ui/QuitOnSignal.h"
#include "ui/ScopeMainWindow.h"
#include "ui/WindowStart.h"

using namespace cvn73100;

namespace {

// The command line of cvnscope-gui; `application` may be a QCoreApplication when only help is wanted.
struct CommandLine {
  QCommandLineParser parser;
  QCommandLineOption form{"form", "The form file that keeps the control's properties (shared with cvnscope).", "PATH"};
  QCommandLineOption country{
      "country", "Language of the control by country code (1, 33, 34, 39, 49, 81, 82, 886); kept in the form.", "CODE"};

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
    parser.addOptions({form, country});
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
  ui::RegisterComponents();
  ui::QtHost host;
  host.Install();

  ui::ScopeMainWindow window(commandLine.parser.value(commandLine.form));
  if (commandLine.parser.isSet(commandLine.country) &&
      !ui::ApplyCountryOption(window, commandLine.parser.value(commandLine.country), "cvnscope-gui")) {
    return 2;
  }
  ui::TranslateQtTexts(static_cast<int>(window.Scope().CountryCode()));
  window.show();
  // Stopped by the session or by Ctrl-C, the program leaves as its window's close does: the form is saved.
  ui::QuitOnSignal quitOnSignal([&window] {
    QApplication::closeAllWindows();
    if (window.isVisible()) window.close();
    QApplication::quit();
  });
  return QApplication::exec();
}
