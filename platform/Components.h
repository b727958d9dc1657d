#pragma once
#include <functional>
#include <memory>

#include "platform/AutomationServer.h"
#include "platform/InstrumentIO.h"

namespace cvn73100 {

// Where the control gets its separate components. The host program registers the real I/O library
// and automation server at start; the core never names them.
class Components {
 public:
  using IOManagerFactory = std::function<std::shared_ptr<IIOManager>()>;
  using ServerFactory = std::function<std::unique_ptr<IAutomationServer>(std::shared_ptr<IIOManager>)>;

  static void SetIOManagerFactory(IOManagerFactory factory);
  static void SetServerFactory(ServerFactory factory);

  // Raise an error naming the missing component when none is registered.
  static std::shared_ptr<IIOManager> CreateIOManager();
  static std::unique_ptr<IAutomationServer> CreateServer(std::shared_ptr<IIOManager> ioManager);
  static bool HasIOManager();
  static bool HasServer();
};

}  // namespace cvn73100
