#include "form/FormFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>

#include "form/FormMerge.h"
#include "platform/AtomicFile.h"
#include "platform/RegularFile.h"
#include "platform/ScopeError.h"
#include "platform/UserFolders.h"

namespace cvn73100 {
namespace {

using nlohmann::json;
constexpr const char* SOURCE = "cvnscope";
constexpr std::int32_t FORM_FILE_ERROR = 75;  // Path/File access error

ScopeError FormError(const std::string& path, const std::string& why) {
  return ScopeError(FORM_FILE_ERROR, SOURCE, "Form file " + path + ": " + why);
}

// Byte arrays are stored as {"bytes": "<hex>"} so the file stays plain text and exact.
json BytesToJson(const Bytes& bytes) {
  static const char* digits = "0123456789abcdef";
  std::string hex;
  hex.reserve(bytes.size() * 2);
  for (std::uint8_t b : bytes) {
    hex += digits[b >> 4];
    hex += digits[b & 15];
  }
  return json{{"bytes", hex}};
}

Bytes BytesFromJson(const std::string& hex) {
  auto nibble = [](char c) -> int {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
  };
  if (hex.size() % 2 != 0) throw RuntimeError(ERR_TYPE_MISMATCH, SOURCE);
  Bytes bytes(hex.size() / 2);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const int hi = nibble(hex[2 * i]), lo = nibble(hex[2 * i + 1]);
    if (hi < 0 || lo < 0) throw RuntimeError(ERR_TYPE_MISMATCH, SOURCE);
    bytes[i] = static_cast<std::uint8_t>(hi * 16 + lo);
  }
  return bytes;
}

json ToJsonValue(const Variant& value) {
  switch (value.GetType()) {
    case Variant::Type::Empty:
      return nullptr;
    case Variant::Type::Boolean:
      return value.AsBool();
    case Variant::Type::Integer:
    case Variant::Type::Long:
      return value.AsLong();
    case Variant::Type::Double:
      return value.AsDouble();
    case Variant::Type::String:
      return value.AsString();
    case Variant::Type::ByteArray:
      return BytesToJson(value.AsBytes());
    case Variant::Type::DoubleArray:
      return value.AsDoubles();
    case Variant::Type::Array: {
      json array = json::array();
      for (const auto& item : value.AsArray()) array.push_back(ToJsonValue(item));
      return array;
    }
  }
  return nullptr;
}

Variant FromJsonValue(const json& value, int depth = 0) {
  if (depth > 8) throw RuntimeError(ERR_TYPE_MISMATCH, SOURCE);
  if (value.is_null()) return Variant();
  if (value.is_boolean()) return Variant(value.get<bool>());
  if (value.is_number_unsigned()) {
    const auto n = value.get<std::uint64_t>();
    if (n <= static_cast<std::uint64_t>(INT32_MAX)) return Variant(static_cast<std::int32_t>(n));
    return Variant(static_cast<double>(n));
  }
  if (value.is_number_integer()) {
    const auto n = value.get<std::int64_t>();
    if (n >= INT32_MIN && n <= INT32_MAX) return Variant(static_cast<std::int32_t>(n));
    return Variant(static_cast<double>(n));
  }
  if (value.is_number()) return Variant(value.get<double>());
  if (value.is_string()) return Variant(value.get<std::string>());
  if (value.is_object() && value.size() == 1 && value.contains("bytes") && value["bytes"].is_string())
    return Variant(BytesFromJson(value["bytes"].get<std::string>()));
  if (value.is_array()) {
    Variant::Array array;
    for (const auto& item : value) array.push_back(FromJsonValue(item, depth + 1));
    return Variant(std::move(array));
  }
  throw RuntimeError(ERR_TYPE_MISMATCH, SOURCE);
}

struct FormDamage {
  std::size_t line;  // 0: the file as a whole
  std::string reason;
};

std::size_t LineAt(const std::string& text, std::size_t offset) {
  offset = std::min(offset, text.size());
  return 1 +
         static_cast<std::size_t>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(offset), '\n'));
}

// The line on which property `key` is written, or 0.
std::size_t LineOfKey(const std::string& text, const std::string& key) {
  const std::size_t at = text.find(json(key).dump() + ":");
  return at == std::string::npos ? 0 : LineAt(text, at);
}

void Parse(const std::string& text, MemoryPropertyBag& bag) {
  json root;
  try {
    root = json::parse(text);
  } catch (const json::parse_error& error) {
    // The library's text reads "[json...] parse error at line L, column C: <reason>".
    std::string reason = error.what();
    if (const std::size_t colon = reason.find(": ", reason.find("column")); colon != std::string::npos)
      reason.erase(0, colon + 2);
    throw FormDamage{LineAt(text, error.byte == 0 ? 0 : error.byte - 1), reason};
  }
  if (!root.is_object() || !root.contains("properties") || !root["properties"].is_object())
    throw FormDamage{1, "not a cvn73100 form"};
  const json& properties = root["properties"];
  MemoryPropertyBag loaded;
  const auto load = [&](const std::string& key) {
    try {
      loaded.Set(key, FromJsonValue(properties[key]));
    } catch (const ScopeError&) {
      throw FormDamage{LineOfKey(text, key), "the value of " + key + " is not one a property can hold"};
    }
  };
  if (root.contains("order") && root["order"].is_array()) {
    for (const auto& key : root["order"])
      if (key.is_string() && properties.contains(key.get<std::string>()) && !loaded.Contains(key.get<std::string>()))
        load(key.get<std::string>());
  }
  for (const auto& item : properties.items())
    if (!loaded.Contains(item.key())) load(item.key());
  bag = std::move(loaded);
}

std::string TimeStamp() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  ::localtime_r(&now, &local);
  char text[32];
  std::strftime(text, sizeof text, "%Y%m%d-%H%M%S", &local);
  return text;
}

// Reads the form at `path` into `bag`: FormDamage when its content is not a form, a FormError when the
// file cannot be read (a FIFO there is refused, not waited on).
void ReadForm(const std::string& path, MemoryPropertyBag& bag) {
  std::optional<std::string> text;
  try {
    struct stat st {};
    if (::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode) &&
        static_cast<std::size_t>(st.st_size) > FormFile::MAX_SIZE)
      throw FormDamage{0, std::to_string(st.st_size) + " bytes, more than the " + std::to_string(FormFile::MAX_SIZE) +
                              " a form may hold"};
    text = ReadRegularFile(path, FormFile::MAX_SIZE);
  } catch (const FileError& error) {
    throw ScopeError(FORM_FILE_ERROR, SOURCE, std::string("Form file ") + error.what());
  }
  if (!text) {
    bag.Clear();
    return;
  }
  Parse(*text, bag);
}

void Tell(const FormFile::Notice& notice, const std::string& message) {
  if (notice)
    notice(message);
  else
    std::cerr << message << "\n";
}

// An exclusive lock on `<form>.lock`, held while it lives. The lock file stays: removing it would let
// two processes lock two different files.
class FormLock {
 public:
  explicit FormLock(const std::string& formPath) : m_path(formPath + ".lock") {
    m_fd = ::open(m_path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (m_fd < 0) throw FormError(m_path, std::strerror(errno));
    for (int waited = 0; ::flock(m_fd, LOCK_EX | LOCK_NB) != 0; waited += 10) {
      if (errno != EWOULDBLOCK || waited >= FormFile::LOCK_WAIT_MS) {
        const std::string why = errno == EWOULDBLOCK ? "still locked by another command after " +
                                                           std::to_string(FormFile::LOCK_WAIT_MS / 1000) + " s"
                                                     : std::strerror(errno);
        ::close(m_fd);
        throw FormError(m_path, why);
      }
      ::usleep(10000);
    }
  }
  ~FormLock() { ::close(m_fd); }
  FormLock(const FormLock&) = delete;
  FormLock& operator=(const FormLock&) = delete;

 private:
  std::string m_path;
  int m_fd = -1;
};

}  // namespace

FormFile::FormFile(std::string path) : m_path(std::move(path)) {}

std::string FormFile::DefaultPath() {
  const std::string config = ConfigFolder();
  if (config.empty()) {
    throw ScopeError(FORM_FILE_ERROR, SOURCE, "No home folder for the form file: set HOME or use --form.");
  }
  return config + "/cvn73100/form.json";
}

std::string FormFile::ToJson(const MemoryPropertyBag& bag) {
  json object = json::object();
  json order = json::array();
  for (const auto& [key, value] : bag.Entries()) {
    object[key] = ToJsonValue(value);
    order.push_back(key);
  }
  // The keys' order is the order the control wrote them in; JSON objects do not keep it.
  return json{{"format", "cvn73100-form"}, {"version", 1}, {"order", order}, {"properties", object}}.dump(
             2, ' ', false, json::error_handler_t::replace) +
         "\n";
}

void FormFile::FromJson(const std::string& text, MemoryPropertyBag& bag) {
  try {
    Parse(text, bag);
  } catch (const FormDamage& damage) {
    throw ScopeError(
        ERR_TYPE_MISMATCH, SOURCE,
        "The form file is not a cvn73100 form: line " + std::to_string(damage.line) + ": " + damage.reason);
  }
}

void FormFile::Load(MemoryPropertyBag& bag, const Notice& notice) const {
  try {
    ReadForm(m_path, bag);
    return;
  } catch (const FormDamage&) {
  }
  // Put aside under the lock, so that a form another command has just repaired stays.
  const FormLock lock(m_path);
  LoadLocked(bag, notice);
}

void FormFile::LoadLocked(MemoryPropertyBag& bag, const Notice& notice) const {
  try {
    ReadForm(m_path, bag);
  } catch (const FormDamage& damage) {
    const std::string damaged = m_path + ".damaged-" + TimeStamp();
    if (std::rename(m_path.c_str(), damaged.c_str()) != 0)
      throw FormError(m_path, damage.reason + "; it cannot be put aside: " + std::strerror(errno));
    bag.Clear();
    Tell(notice, "Form file " + m_path + (damage.line ? ", line " + std::to_string(damage.line) : std::string()) +
                     ": " + damage.reason + ". It is kept as " + damaged + "; going on with a fresh form.");
  }
}

MemoryPropertyBag FormFile::SaveChanges(const MemoryPropertyBag& base, const MemoryPropertyBag& mine,
                                        const Notice& notice) const {
  std::error_code ec;
  const std::filesystem::path folder = std::filesystem::path(m_path).parent_path();
  if (!folder.empty()) std::filesystem::create_directories(folder, ec);
  const FormLock lock(m_path);
  MemoryPropertyBag current;
  LoadLocked(current, notice);
  MemoryPropertyBag merged = MergeFormChanges(base, mine, current);
  Save(merged);
  return merged;
}

void FormFile::Save(const MemoryPropertyBag& bag) const {
  const std::filesystem::path folder = std::filesystem::path(m_path).parent_path();
  std::error_code ec;
  if (!folder.empty()) std::filesystem::create_directories(folder, ec);
  const std::string text = ToJson(bag);
  // What could not be read back is not written.
  if (text.size() > MAX_SIZE)
    throw FormError(m_path, "it would take " + std::to_string(text.size()) + " bytes, more than the " +
                                std::to_string(MAX_SIZE) + " a form may hold; remove setups it no longer needs");
  try {
    ReplaceFileAtomically(m_path, {text});
  } catch (const AtomicFileError& error) {
    throw ScopeError(FORM_FILE_ERROR, SOURCE, std::string("Form file ") + error.what());
  }
}

}  // namespace cvn73100
