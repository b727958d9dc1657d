#include "simulator/ErrorCode.h"

namespace cvn73100::sim {

std::string_view ErrorText(int code) {
  switch (code) {
    case kNoError:
      return "No error";
    case kCommandError:
      return "Command error";
    case kInvalidCharacter:
      return "Invalid character";
    case kSyntaxError:
      return "Syntax error";
    case kInvalidSeparator:
      return "Invalid separator";
    case kDataTypeError:
      return "Data type error";
    case kParameterNotAllowed:
      return "Parameter not allowed";
    case kMissingParameter:
      return "Missing parameter";
    case kHeaderSeparatorError:
      return "Header separator error";
    case kProgramMnemonicTooLong:
      return "Program mnemonic too long";
    case kUndefinedHeader:
      return "Undefined header";
    case kHeaderSuffixOutOfRange:
      return "Header suffix out of range";
    case kNumericDataError:
      return "Numeric data error";
    case kInvalidCharacterInNumber:
      return "Invalid character in number";
    case kExponentTooLarge:
      return "Exponent too large";
    case kTooManyDigits:
      return "Too many digits";
    case kInvalidSuffix:
      return "Invalid suffix";
    case kInvalidCharacterData:
      return "Invalid character data";
    case kCharacterDataTooLong:
      return "Character data too long";
    case kInvalidStringData:
      return "Invalid string data";
    case kInvalidBlockData:
      return "Invalid block data";
    case kExecutionError:
      return "Execution error";
    case kSettingsConflict:
      return "Settings conflict";
    case kDataOutOfRange:
      return "Data out of range";
    case kIllegalParameterValue:
      return "Illegal parameter value";
    case kDataCorruptOrStale:
      return "Data corrupt or stale";
    case kQueueOverflow:
      return "Queue overflow";
    case kInputBufferOverrun:
      return "Input buffer overrun";
    case kQueryError:
      return "Query error";
    case kQueryInterrupted:
      return "Query INTERRUPTED";
    default:
      return "Unknown error";
  }
}

}  // namespace cvn73100::sim
