#include "platform/Interrupt.h"

#include <utility>
#include <vector>

namespace cvn73100 {
namespace {

thread_local std::vector<const Interrupt::Check_t*> t_checks;

}  // namespace

Interrupt::Scope::Scope(Check_t shouldStop) : m_shouldStop(std::move(shouldStop)) { t_checks.push_back(&m_shouldStop); }

Interrupt::Scope::~Scope() { t_checks.pop_back(); }

bool Interrupt::Installed() { return !t_checks.empty(); }

void Interrupt::Check() {
  for (const Check_t* check : t_checks) {
    if (*check && (*check)()) throw Interrupted();
  }
}

Interrupt::Check_t Interrupt::Current() {
  if (t_checks.empty()) return {};
  std::vector<Check_t> checks;
  for (const Check_t* check : t_checks) checks.push_back(*check);
  return [checks = std::move(checks)] {
    return std::any_of(checks.begin(), checks.end(), [](const Check_t& c) { return c && c(); });
  };
}

}  // namespace cvn73100
