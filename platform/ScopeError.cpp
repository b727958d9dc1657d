#include "platform/ScopeError.h"

namespace cvn73100 {

ScopeError::ScopeError(std::int32_t number, std::string source, std::string description, std::string helpFile)
    : std::runtime_error(description),
      m_number(number),
      m_source(std::move(source)),
      m_description(std::move(description)),
      m_helpFile(std::move(helpFile)) {}

ScopeError RuntimeError(std::int32_t code, const std::string& source) {
  const char* text = "Application-defined or object-defined error";
  switch (code) {
    case ERR_INVALID_PROCEDURE_CALL:
      text = "Invalid procedure call or argument";
      break;
    case ERR_SUBSCRIPT_OUT_OF_RANGE:
      text = "Subscript out of range";
      break;
    case ERR_TYPE_MISMATCH:
      text = "Type mismatch";
      break;
    case ERR_DUPLICATE_KEY:
      text = "This key is already associated with an element of this collection";
      break;
    default:
      break;
  }
  return ScopeError(code, source, text);
}

}  // namespace cvn73100
