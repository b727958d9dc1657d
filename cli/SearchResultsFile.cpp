#include "cli/SearchResultsFile.h"

#include <filesystem>
#include <nlohmann/json.hpp>

#include "cli/AtomicFile.h"
#include "cli/CliContext.h"
#include "cli/JsonText.h"
#include "platform/RegularFile.h"

namespace cvn73100 {
namespace {

using nlohmann::json;
constexpr std::int32_t FILE_ERROR = 75;  // Path/File access error
constexpr std::uintmax_t MAX_FILE_SIZE = 16u << 20;

ScopeError ResultsError(const std::string& path, const std::string& why) {
  return ScopeError(FILE_ERROR, CLI_SOURCE, "Search results " + path + ": " + why);
}

std::string Text(const json& object, const char* key) {
  const auto it = object.find(key);
  return it != object.end() && it->is_string() ? it->get<std::string>() : std::string();
}

}  // namespace

SearchResultsFile::SearchResultsFile(const std::string& formPath) {
  std::filesystem::path path(formPath);
  path.replace_extension();
  m_path = path.string() + ".search.json";
}

std::vector<TableRow> SearchResultsFile::Load() const {
  std::optional<std::string> text;
  try {
    text = ReadRegularFile(m_path, MAX_FILE_SIZE);
  } catch (const FileError& error) {
    throw ScopeError(FILE_ERROR, CLI_SOURCE, std::string("Search results ") + error.what());
  }
  if (!text) return {};
  const json root = json::parse(*text, nullptr, false);
  if (root.is_discarded() || !root.is_object() || !root.contains("rows") || !root["rows"].is_array())
    throw ResultsError(m_path, "not a cvnscope search result");
  std::vector<TableRow> table;
  for (const auto& item : root["rows"]) {
    if (!item.is_object()) throw ResultsError(m_path, "not a cvnscope search result");
    TableRow entry;
    entry.number = static_cast<std::int32_t>(table.size()) + 1;
    entry.row.model = Text(item, "model");
    entry.row.supported = Text(item, "supported");
    entry.row.address = Text(item, "address");
    entry.row.manufacturer = Text(item, "manufacturer");
    entry.row.reply = Text(item, "reply");
    entry.fullAddress = Text(item, "fullAddress");
    if (entry.fullAddress.empty()) throw ResultsError(m_path, "a row without an address");
    table.push_back(std::move(entry));
  }
  return table;
}

void SearchResultsFile::Save(const std::vector<TableRow>& table) const {
  json rows = json::array();
  for (const auto& entry : table) {
    rows.push_back(json{{"row", entry.number},
                        {"model", entry.row.model},
                        {"supported", entry.row.supported},
                        {"address", entry.row.address},
                        {"fullAddress", entry.fullAddress},
                        {"manufacturer", entry.row.manufacturer},
                        {"reply", entry.row.reply}});
  }
  const std::string text =
      json{{"format", "cvnscope-search"}, {"version", 1}, {"rows", rows}}.dump(2, ' ', false, kReplaceInvalidUtf8) +
      "\n";

  WriteFileAtomically(m_path, text, "Search results");
}

}  // namespace cvn73100
