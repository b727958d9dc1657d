#pragma once
#include <pybind11/pybind11.h>

#include <memory>
#include <string>

#include "control/Cvn73100Scope.h"
#include "ioconfig/CIOconfiguration.h"
#include "python/src/Released.h"
#include "setups/SetupCvn73100Scope.h"
#include "setups/SetupsCvn73100Scope.h"

// The parts of the module, one function per part, called by the module's init in this order:
// enumerations, host, IOConfiguration, Setup and Setups, the Scope class with its sub-objects, the search,
// and the simulator.
namespace cvn73100::python {

namespace py = pybind11;

using ScopePtr = std::shared_ptr<Cvn73100Scope>;
using ScopeClass = py::class_<Cvn73100Scope, ScopePtr>;

// A collection and the control that owns it. The control stays alive while Python holds its collection:
// ending the control would empty the collection and cut it off from the connection.
struct SetupsRef {
  std::shared_ptr<SetupsCvn73100Scope> setups;
  ScopePtr owner;  // null for a collection of its own
};

// One setup, and the control behind its collection (for the same reason).
struct SetupRef {
  std::shared_ptr<SetupCvn73100Scope> setup;
  ScopePtr owner;
};

// An I/O configuration: a control's own (owner set), or one of its own. A change made to a control's
// configuration is handed to the control at once, as Apply on a property page does, so the connection
// follows the active address.
struct IOConfigurationRef {
  std::shared_ptr<CIOconfiguration> configuration;
  ScopePtr owner;
  void Changed() const {
    if (owner) Wait([&] { owner->IOConfigurationChanged(); });
  }
};

// The English text of catalogue message `number`, for docstrings.
std::string CatalogueText(int number);

void BindEnums(py::module_& module);
void BindHost(py::module_& module);
void BindIOConfiguration(py::module_& module);
void BindSetups(py::module_& module);
ScopeClass DeclareScope(py::module_& module);
void BindSubObjects(py::module_& module, ScopeClass& scope);
void BindScope(py::module_& module, ScopeClass& scope);
void BindDiscovery(py::module_& module, ScopeClass& scope);
void BindSim(py::module_& sim);

}  // namespace cvn73100::python
