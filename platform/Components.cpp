#include "platform/Components.h"

namespace cvn73100 {
namespace {

Components::IOManagerFactory& IOFactory() {
  static Components::IOManagerFactory factory;
  return factory;
}

Components::ServerFactory& ServerFactoryFn() {
  static Components::ServerFactory factory;
  return factory;
}

ScopeError Missing(const char* what) {
  return ScopeError(ObjectError(429), "Cvn73100CtrlLib", std::string("Cannot create the component: ") + what);
}

}  // namespace

void Components::SetIOManagerFactory(IOManagerFactory factory) { IOFactory() = std::move(factory); }
void Components::SetServerFactory(ServerFactory factory) { ServerFactoryFn() = std::move(factory); }
bool Components::HasIOManager() { return static_cast<bool>(IOFactory()); }
bool Components::HasServer() { return static_cast<bool>(ServerFactoryFn()); }

std::shared_ptr<IIOManager> Components::CreateIOManager() {
  if (!IOFactory()) throw Missing("I/O manager");
  return IOFactory()();
}

std::unique_ptr<IAutomationServer> Components::CreateServer(std::shared_ptr<IIOManager> ioManager) {
  if (!ServerFactoryFn()) throw Missing("automation server");
  return ServerFactoryFn()(std::move(ioManager));
}

}  // namespace cvn73100
