#include "iolib/IOLibrary.h"

#include "iolib/IOManager.h"
#include "platform/Components.h"

namespace cvn73100::io {

void RegisterIOLibrary() {
  Components::SetIOManagerFactory([]() -> std::shared_ptr<IIOManager> { return IOManager::FromEnvironment(); });
}

}  // namespace cvn73100::io
