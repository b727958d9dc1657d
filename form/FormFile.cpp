#include "form/FormFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "cli/JsonText.h"
#include "platform/ScopeError.h"
#include "platform/UserFolders.h"

namespace cvn73100 {
namespace {

using nlohmann::json;
constexpr const char* SOURCE = "cvnscope";
constexpr std::int32_t FORM_FILE_ERROR = 75;  // Path/File access error
constexpr std::uintmax_t MAX_FORM_SIZE = 64u << 20;

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
    case Variant::Type::Empty: return nullptr;
    case Variant::Type::Boolean: return value.AsBool();
    case Variant::Type::Integer:
    case Variant::Type::Long: return value.AsLong();
    case Variant::Type::Double: return value.AsDouble();
    case Variant::Type::String: return value.AsString();
    case Variant::Type::ByteArray: return BytesToJson(value.AsBytes());
    case Variant::Type::DoubleArray: return value.AsDoubles();
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

void WriteWhole(int fd, const std::string& text, const std::string& path) {
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) throw FormError(path, std::strerror(errno));
    done += static_cast<std::size_t>(n);
  }
}

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
  return json{{"format", "cvn73100-form"}, {"version", 1}, {"order", order}, {"properties", object}}.dump(2, ' ', false, kReplaceInvalidUtf8) + "\n";
}

void FormFile::FromJson(const std::string& text, MemoryPropertyBag& bag) {
  const json root = json::parse(text, nullptr, false);
  if (root.is_discarded() || !root.is_object() || !root.contains("properties") || !root["properties"].is_object())
    throw ScopeError(ERR_TYPE_MISMATCH, SOURCE, "The form file is not a cvn73100 form.");
  const json& properties = root["properties"];
  MemoryPropertyBag loaded;
  if (root.contains("order") && root["order"].is_array()) {
    for (const auto& key : root["order"])
      if (key.is_string() && properties.contains(key.get<std::string>()))
        loaded.Set(key.get<std::string>(), FromJsonValue(properties[key.get<std::string>()]));
  }
  for (const auto& [key, value] : properties.items())
    if (!loaded.Contains(key)) loaded.Set(key, FromJsonValue(value));
  bag = std::move(loaded);
}

void FormFile::Load(MemoryPropertyBag& bag) const {
  std::error_code ec;
  if (!std::filesystem::exists(m_path, ec)) {
    bag.Clear();
    return;
  }
  if (std::filesystem::file_size(m_path, ec) > MAX_FORM_SIZE) throw FormError(m_path, "too large");
  std::ifstream in(m_path, std::ios::binary);
  if (!in) throw FormError(m_path, "cannot be read");
  std::ostringstream text;
  text << in.rdbuf();
  try {
    FromJson(text.str(), bag);
  } catch (const ScopeError& error) {
    throw FormError(m_path, error.Description());
  }
}

void FormFile::Save(const MemoryPropertyBag& bag) const {
  const std::filesystem::path target(m_path);
  std::error_code ec;
  if (target.has_parent_path()) std::filesystem::create_directories(target.parent_path(), ec);
  std::string temp = m_path + ".XXXXXX";
  const int fd = ::mkstemp(temp.data());
  if (fd < 0) throw FormError(m_path, std::strerror(errno));
  try {
    WriteWhole(fd, ToJson(bag), m_path);
    if (::fsync(fd) != 0) throw FormError(m_path, std::strerror(errno));
  } catch (...) {
    ::close(fd);
    ::unlink(temp.c_str());
    throw;
  }
  if (::close(fd) != 0) {
    ::unlink(temp.c_str());
    throw FormError(m_path, std::strerror(errno));
  }
  if (std::rename(temp.c_str(), m_path.c_str()) != 0) {
    const std::string why = std::strerror(errno);
    ::unlink(temp.c_str());
    throw FormError(m_path, why);
  }
}

}  // namespace cvn73100
