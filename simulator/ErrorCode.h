#pragma once

#include <string_view>

namespace cvn73100::sim {

// The standard IEEE 488.2 / SCPI error numbers the instrument reports through :SYSTem:ERRor?.
enum ErrorCode : int {
  kNoError = 0,
  kCommandError = -100,
  kInvalidCharacter = -101,
  kSyntaxError = -102,
  kInvalidSeparator = -103,
  kDataTypeError = -104,
  kParameterNotAllowed = -108,
  kMissingParameter = -109,
  kHeaderSeparatorError = -111,
  kProgramMnemonicTooLong = -112,
  kUndefinedHeader = -113,
  kHeaderSuffixOutOfRange = -114,
  kNumericDataError = -120,
  kInvalidCharacterInNumber = -121,
  kExponentTooLarge = -123,
  kTooManyDigits = -124,
  kInvalidSuffix = -131,
  kInvalidCharacterData = -141,
  kCharacterDataTooLong = -144,
  kInvalidStringData = -151,
  kInvalidBlockData = -161,
  kExecutionError = -200,
  kSettingsConflict = -221,
  kDataOutOfRange = -222,
  kIllegalParameterValue = -224,
  kDataCorruptOrStale = -230,
  kQueueOverflow = -350,
  kInputBufferOverrun = -363,
  kQueryError = -400,
  kQueryInterrupted = -410,
};

// The standard text of an error number ("Undefined header"); "Unknown error" for numbers outside the list.
std::string_view ErrorText(int code);

}  // namespace cvn73100::sim
