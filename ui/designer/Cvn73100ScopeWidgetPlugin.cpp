#include "ui/designer/Cvn73100ScopeWidgetPlugin.h"

#include "iolib/IOLibrary.h"
#include "platform/Host.h"
#include "server/Cvn73100Server.h"
#include "simulator/Backend.h"
#include "ui/Cvn73100ScopeWidget.h"
#include "ui/QtHost.h"
#include "ui/ScopeIcon.h"
#include "ui/SetupsPage.h"

namespace cvn73100::ui {
namespace {

// Designer's process has no host of ours: one in design mode serves every control on its forms, so a
// control there shows its boxes and pages but leaves the instrument alone.
void InstallDesignHost() {
  static QtHost* host = nullptr;
  if (host) return;
  if (dynamic_cast<SilentHost*>(&Host::Current()) == nullptr) return;  // a program's own host stays
  host = new QtHost;
  host->SetUserMode(false);
  host->Install();
}

}  // namespace

Cvn73100ScopeWidgetPlugin::Cvn73100ScopeWidgetPlugin(QObject* parent) : QObject(parent) {}

QString Cvn73100ScopeWidgetPlugin::name() const { return QStringLiteral("cvn73100::ui::Cvn73100ScopeWidget"); }

QString Cvn73100ScopeWidgetPlugin::group() const { return QStringLiteral("Instruments"); }

QString Cvn73100ScopeWidgetPlugin::toolTip() const { return QStringLiteral("73100 oscilloscope control"); }

QString Cvn73100ScopeWidgetPlugin::whatsThis() const {
  return QStringLiteral(
      "The 73100 oscilloscope control: set its address, call Initialize, then send commands, capture "
      "waveforms and screen images and keep instrument set-ups. Scope() gives the control object.");
}

QString Cvn73100ScopeWidgetPlugin::includeFile() const { return QStringLiteral("ui/Cvn73100ScopeWidget.h"); }

QIcon Cvn73100ScopeWidgetPlugin::icon() const { return ScopeIcon(); }

bool Cvn73100ScopeWidgetPlugin::isContainer() const { return false; }

QWidget* Cvn73100ScopeWidgetPlugin::createWidget(QWidget* parent) {
  // The control cannot be made without the I/O library and the automation server; registering them
  // again is harmless.
  io::RegisterIOLibrary();
  sim::RegisterBackend();
  server::RegisterAutomationServer();
  InstallDesignHost();
  return new Cvn73100ScopeWidget(parent);
}

bool Cvn73100ScopeWidgetPlugin::isInitialized() const { return m_bInitialized; }

void Cvn73100ScopeWidgetPlugin::initialize(QDesignerFormEditorInterface* core) {
  (void)core;
  m_bInitialized = true;
}

QString Cvn73100ScopeWidgetPlugin::domXml() const {
  return QStringLiteral(
      "<ui language=\"c++\">\n"
      " <widget class=\"cvn73100::ui::Cvn73100ScopeWidget\" name=\"cvn73100Scope\">\n"
      "  <property name=\"geometry\">\n"
      "   <rect><x>0</x><y>0</y><width>260</width><height>80</height></rect>\n"
      "  </property>\n"
      "  <property name=\"toolTip\"><string>73100 oscilloscope control</string></property>\n"
      " </widget>\n"
      "</ui>\n");
}

}  // namespace cvn73100::ui
