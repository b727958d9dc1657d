#pragma once
#include "diagnostics/CDebug.h"
#include "dialogs/Messages.h"

// How the I/O configuration reports a broken invariant and refuses a value.
namespace cvn73100::ioconfig_checks {

inline constexpr const char* CLASS_NAME = "CIOConfiguration";

// Reports `expression` when `condition` is false, and hands the condition back.
inline bool Verify(bool condition, const char* expression, const char* procedure, const char* location = "") {
  CDebug::Instance().Assert(condition, expression, CLASS_NAME, procedure, location);
  return condition;
}

// Reports `expression` as broken and raises the invalid-property-value error.
[[noreturn]] inline void Reject(const char* expression, const char* procedure, const char* location = "") {
  Verify(false, expression, procedure, location);
  throw InvalidPropertyValue();
}

}  // namespace cvn73100::ioconfig_checks
