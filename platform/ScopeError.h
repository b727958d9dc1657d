#pragma once
#include <cstdint>
#include <stdexcept>
#include <string>

namespace cvn73100 {

// Errors are numbered above the object-error base like the errors an automation host raises.
inline constexpr std::int32_t OBJECT_ERROR_BASE = static_cast<std::int32_t>(0x80040000u);
inline constexpr const char* HELP_FILE = "Cvn73100.hlp";

// Codes added to OBJECT_ERROR_BASE.
enum ErrorCode : std::int32_t {
  ERR_SETUP_NOT_SENDABLE = 17,
  ERR_ASSERTION = 51,
  ERR_FAILED_CONNECTION = 59,
  ERR_NOT_A_SETUP_FILE = 321,
  ERR_INVALID_PROPERTY_VALUE = 380,
  ERR_SETUP_FILE = 31037,
};

// Plain run-time error numbers of keyed lists and conversions (not over the base).
enum RuntimeErrorCode : std::int32_t {
  ERR_INVALID_PROCEDURE_CALL = 5,
  ERR_SUBSCRIPT_OUT_OF_RANGE = 9,
  ERR_TYPE_MISMATCH = 13,
  ERR_DUPLICATE_KEY = 457,
};

constexpr std::int32_t ObjectError(std::int32_t code) { return OBJECT_ERROR_BASE + code; }

// Every failure the host sees: a number, a source text, a description and a help file.
class ScopeError : public std::runtime_error {
 public:
  ScopeError(std::int32_t number, std::string source, std::string description, std::string helpFile = HELP_FILE);

  std::int32_t Number() const { return m_number; }
  const std::string& Source() const { return m_source; }
  const std::string& Description() const { return m_description; }
  const std::string& HelpFile() const { return m_helpFile; }

 private:
  std::int32_t m_number;
  std::string m_source;
  std::string m_description;
  std::string m_helpFile;
};

// The keyed-list and conversion errors, with their classic texts.
ScopeError RuntimeError(std::int32_t code, const std::string& source = "Cvn73100CtrlLib");

}  // namespace cvn73100
