#include "ui/PropertyPage.h"

#include <map>

#include "control/Cvn73100Scope.h"
#include "ui/SearchCriteriaPage.h"
#include "ui/SearchInstrumentsPage.h"
#include "ui/SetIOPage.h"
#include "ui/SetupsPage.h"

namespace cvn73100::ui {
namespace {

// Made on first use: a static library's own registration objects would not be linked in.
std::map<std::string, PropertyPageFactory>& Registry() {
  static std::map<std::string, PropertyPageFactory> registry{
      {Cvn73100Scope::PAGE_SEARCH_IO, [](QWidget* parent) { return new SearchInstrumentsPage(parent); }},
      {Cvn73100Scope::PAGE_SEARCH_CRITERIA, [](QWidget* parent) { return new SearchCriteriaPage(parent); }},
      {Cvn73100Scope::PAGE_SET_IO, [](QWidget* parent) { return new SetIOPage(parent); }},
      {Cvn73100Scope::PAGE_SETUPS, [](QWidget* parent) { return new SetupsPage(parent); }},
  };
  return registry;
}

}  // namespace

void RegisterPropertyPage(const std::string& className, PropertyPageFactory factory) {
  Registry()[className] = std::move(factory);
}

PropertyPageFactory FindPropertyPage(const std::string& className) {
  const auto& registry = Registry();
  const auto found = registry.find(className);
  return found == registry.end() ? PropertyPageFactory() : found->second;
}

}  // namespace cvn73100::ui
