// Identifies the instrument at GPIB0::7 through the installed control, I/O library, simulator and automation server.
#include <exception>
#include <iostream>

#include "connection/CCvn73100EZ.h"
#include "control/Cvn73100Scope.h"
#include "iolib/IOLibrary.h"
#include "platform/ScopeError.h"
#include "server/Cvn73100Server.h"
#include "simulator/Backend.h"

int main() {
  try {
    cvn73100::io::RegisterIOLibrary();
    cvn73100::sim::RegisterBackend();
    cvn73100::server::RegisterAutomationServer();
    cvn73100::Cvn73100Scope scope;
    scope.SetAddress("GPIB0::7::INSTR");
    scope.Initialize();
    std::cout << scope.Connection()->IDNQuery() << "\n";
    return 0;
  } catch (const cvn73100::ScopeError& e) {
    std::cerr << e.Number() << " " << e.Source() << ": " << e.Description() << "\n";
  } catch (const std::exception& e) {
    std::cerr << e.what() << "\n";
  }
  return 1;
}
