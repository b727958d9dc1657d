#include "setups/CWrenfoldFile.h"

#include <string_view>

#include "diagnostics/CDebug.h"
#include "dialogs/Messages.h"
#include "setups/SetupFileReader.h"
#include "setups/SetupText.h"

namespace cvn73100 {
namespace {

constexpr const char* CLASS_NAME = "CWrenfoldFile";
constexpr int MSG_OPEN_SETUP_FILE = 670;
constexpr int MSG_LOAD_ERROR = 673;
constexpr int MSG_SAVE_ERROR = 681;
constexpr std::size_t TYPE_LENGTH = 3;
constexpr std::size_t MAKER_CODE_LENGTH = 3;

[[noreturn]] void Raise(const char* procedure, const char* location, int description) {
  CDebug::Instance().Assert(false, "", CLASS_NAME, procedure, location);
  throw CatalogueError(ERR_SETUP_FILE, MSG_OPEN_SETUP_FILE, description);
}

}  // namespace

std::string CWrenfoldFile::ReadField(SetupFileReader& file) {
  if (file.AtEnd()) Raise("ReadField", "1", MSG_LOAD_ERROR);
  std::string line;
  for (;;) {
    const auto c = file.ReadByte();
    if (!c) Raise("ReadField", "2", MSG_LOAD_ERROR);
    if (*c == '\n') return line;
    if (line.size() >= MAX_LINE_LENGTH) Raise("ReadField", "2", MSG_LOAD_ERROR);
    line.push_back(static_cast<char>(*c));
  }
}

bool CWrenfoldFile::ReadFileTypeAndROMVersion(SetupFileReader& file, std::string& type, std::string& romVersion) {
  const std::string line = ReadField(file);
  type = line.substr(0, TYPE_LENGTH);
  romVersion = line.size() > TYPE_LENGTH ? line.substr(TYPE_LENGTH) : std::string();
  if (!SetupText::EqualsIgnoreCase(type, FILE_TYPE)) Raise("ReadFileTypeAndROMVersion", "1", MSG_SAVE_ERROR);
  switch (romVersion.size()) {
    case 3:
      return true;
    case 4:
      return false;
    default:
      Raise("ReadField", "Case Else", MSG_SAVE_ERROR);
  }
}

bool CWrenfoldFile::IsACompatibleFile(const std::string& fileName) noexcept {
  try {
    SetupFileReader file;
    if (!file.Open(fileName)) return false;
    std::string type;
    std::string romVersion;
    ReadFileTypeAndROMVersion(file, type, romVersion);
    return SetupText::EqualsIgnoreCase(type, FILE_TYPE);
  } catch (...) {
    return false;
  }
}

void CWrenfoldFile::ReadFile(const std::string& fileName) {
  SetupFileReader file;
  if (!file.Open(fileName)) Raise("ReadFile", "ErrorHandler", MSG_LOAD_ERROR);
  std::string type;
  std::string romVersion;
  ReadFileTypeAndROMVersion(file, type, romVersion);
  // Line 2 only has to be a number; its value means nothing to the control.
  SetupFileReader::ConvertToLong(ReadField(file));
  SetUserComments(SetupText::Trim(ReadField(file)));
  const std::string makerAndModel = ReadField(file);
  SetModel(makerAndModel.size() > MAKER_CODE_LENGTH ? makerAndModel.substr(MAKER_CODE_LENGTH) : std::string());
  const std::string makerCode = makerAndModel.substr(0, MAKER_CODE_LENGTH);
  SetManufacturer(SetupText::EqualsIgnoreCase(makerCode, MAKER_CODE) ? DEFAULT_MANUFACTURER : makerCode);
  SetVersion(WILDCARD_VERSION);
  SetSerialNumber("");
  SetReservedField1("");
  SetReservedField2("");
  SetReservedField3("");

  const std::size_t commandLength = std::string_view(SETUP_COMMAND).size();
  Bytes command;
  if (!file.ReadExactly(commandLength, command) ||
      !SetupText::EqualsIgnoreCase(std::string_view(reinterpret_cast<const char*>(command.data()), command.size()),
                                   SETUP_COMMAND)) {
    file.Close();
    Raise("ReadFile", "1", MSG_LOAD_ERROR);
  }
  Bytes data;
  if (const auto left = static_cast<std::size_t>(file.Size() - file.Position()); left > MAX_LEARN_STRING_BYTES) {
    file.Close();
    SetupFileReader::RefuseLearnStringOf(left);
  }
  if (!file.ReadToEnd(MAX_LEARN_STRING_BYTES, data)) Raise("ReadFile", "2", MSG_LOAD_ERROR);
  file.Close();
  if (data.size() < 2) {
    SetLearnString(std::nullopt);
  } else {
    TakeLearnString(std::move(data));
  }
}

void CWrenfoldFile::WriteFile(const std::string& /*fileName*/) { Raise("WriteFile", "1", MSG_SAVE_ERROR); }

}  // namespace cvn73100
