#include "setups/CSetupFile.h"

#include <stdexcept>
#include <string_view>

#include "diagnostics/CDebug.h"
#include "dialogs/Messages.h"
#include "platform/AtomicFile.h"
#include "setups/SetupFileReader.h"
#include "setups/SetupText.h"

namespace cvn73100 {
namespace {

constexpr const char* CLASS_NAME = "CSetupFile";
constexpr int MSG_OPEN_SETUP_FILE = 670;
constexpr int MSG_LOAD_ERROR = 673;
constexpr int MSG_SAVE_ERROR = 681;

// A save that cannot complete; WriteFile turns it into the catalogue error after asserting.
class WriteFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

[[noreturn]] void RaiseReadError(const char* procedure, const char* location) {
  CDebug::Instance().Assert(false, "", CLASS_NAME, procedure, location);
  throw CatalogueError(ERR_SETUP_FILE, MSG_OPEN_SETUP_FILE, MSG_LOAD_ERROR);
}

[[noreturn]] void RaiseWrongFormat(const char* location) {
  CDebug::Instance().Assert(false, "", CLASS_NAME, "ReadFileTypeAndVersion", location);
  // The saving message is the one this reading failure has always shown.
  throw CatalogueError(ERR_SETUP_FILE, MSG_OPEN_SETUP_FILE, MSG_SAVE_ERROR);
}

std::size_t DecimalDigits(std::int64_t value) { return std::to_string(value).size(); }

}  // namespace

std::int64_t CSetupFile::HeaderLength(std::int64_t tailLength) {
  const std::size_t digits = DecimalDigits(tailLength);
  const std::int64_t length = tailLength + static_cast<std::int64_t>(digits) + 1;
  // Field 1 counts its own digits: when they outgrow those of the tail length, one more byte is needed.
  if (DecimalDigits(length) == digits) return length;
  if (DecimalDigits(length) == digits + 1) return length + 1;
  return -1;
}

std::string CSetupFile::HeaderText() const {
  const std::size_t dataLength = LearnString() ? LearnString()->size() : 0;
  const std::string dataLengthText = std::to_string(dataLength);
  const std::string_view fields[] = {FILE_TYPE,        FORMAT_VERSION,   Model(),          Manufacturer(),
                                     SerialNumber(),   Version(),        UserComments(),   DESCRIPTION,
                                     ReservedField1(), ReservedField2(), ReservedField3(), dataLengthText};
  std::string tail;
  for (const std::string_view field : fields) {
    // A terminator inside a field would shift every later field; such a file could never be read back.
    if (field.find(FIELD_TERMINATOR) != std::string_view::npos) {
      throw WriteFailure("a header field contains \"|\": " + std::string(field.substr(0, 80)));
    }
    if (field.size() > MAX_FIELD_LENGTH) throw WriteFailure("a header field is too long");
    tail.append(field);
    tail.push_back(FIELD_TERMINATOR);
  }
  const std::int64_t headerLength = HeaderLength(static_cast<std::int64_t>(tail.size()));
  if (headerLength < 0) {
    CDebug::Instance().Assert(false, "", CLASS_NAME, "WriteFile", "1");
    throw WriteFailure("no consistent header length");
  }
  return std::to_string(headerLength) + FIELD_TERMINATOR + tail;
}

void CSetupFile::WriteFile(const std::string& fileName) {
  try {
    if (LearnString() && LearnString()->size() > MAX_LEARN_STRING_BYTES) {
      throw WriteFailure("the learn string is longer than a setup file may hold");
    }
    const std::string header = HeaderText();
    const std::string_view data =
        LearnString() ? std::string_view(reinterpret_cast<const char*>(LearnString()->data()), LearnString()->size())
                      : std::string_view();
    ReplaceFileAtomically(fileName, {header, data});
  } catch (const std::exception& failure) {
    CDebug::Instance().Assert(false, failure.what(), CLASS_NAME, "WriteFile", "ErrorHandler");
    throw CatalogueError(ERR_SETUP_FILE, MSG_OPEN_SETUP_FILE, MSG_SAVE_ERROR);
  }
}

std::string CSetupFile::ReadField(SetupFileReader& file, std::size_t limit) {
  if (file.AtEnd()) RaiseReadError("ReadField", "1");
  std::string field;
  for (std::uint8_t c = *file.ReadByte(); c != FIELD_TERMINATOR; c = *file.ReadByte()) {
    field.push_back(static_cast<char>(c));
    if ((limit > 0 && field.size() > limit) || field.size() > MAX_FIELD_LENGTH || file.AtEnd()) {
      RaiseReadError("ReadField", "2");
    }
  }
  return field;
}

void CSetupFile::ReadFileTypeAndVersion(SetupFileReader& file, std::string& headerLength) {
  headerLength = ReadField(file);
  const std::string type = ReadField(file, std::string_view(FILE_TYPE).size() + 1);
  if (!SetupText::EqualsIgnoreCase(type, FILE_TYPE)) RaiseWrongFormat("1");
  if (ReadField(file) != FORMAT_VERSION) RaiseWrongFormat("2");
}

bool CSetupFile::IsACompatibleFile(const std::string& fileName) noexcept {
  try {
    SetupFileReader file;
    if (!file.Open(fileName)) return false;
    std::string headerLength;
    ReadFileTypeAndVersion(file, headerLength);
    return true;
  } catch (...) {
    return false;
  }
}

void CSetupFile::ReadFile(const std::string& fileName) {
  SetupFileReader file;
  if (!file.Open(fileName)) RaiseReadError("ReadFile", "ErrorHandler");
  std::string headerLengthText;
  ReadFileTypeAndVersion(file, headerLengthText);
  SetModel(ReadField(file));
  SetManufacturer(ReadField(file));
  SetSerialNumber(ReadField(file));
  SetVersion(ReadField(file));
  SetUserComments(ReadField(file));
  ReadField(file);  // the description is rewritten on every save
  SetReservedField1(ReadField(file));
  SetReservedField2(ReadField(file));
  SetReservedField3(ReadField(file));
  const std::string dataLengthText = ReadField(file);

  const std::int32_t dataLength = SetupFileReader::ConvertToLong(dataLengthText);
  if (dataLength < 0) RaiseReadError("ReadFile", "1");
  if (file.Position() != SetupFileReader::ConvertToLong(headerLengthText)) RaiseReadError("ReadFile", "2");
  const auto length = static_cast<std::size_t>(dataLength);
  if (length > MAX_LEARN_STRING_BYTES) SetupFileReader::RefuseLearnStringOf(length);
  if (dataLength > file.Size() - file.Position()) RaiseReadError("ReadFile", "3");
  Bytes data;
  if (!file.ReadExactly(length, data)) RaiseReadError("ReadFile", "3");
  file.Close();
  // A single byte is no learn string an instrument produces; it reads back as none.
  if (data.size() < 2) {
    SetLearnString(std::nullopt);
  } else {
    TakeLearnString(std::move(data));
  }
}

}  // namespace cvn73100
