#pragma once
#include <string>
#include <vector>

#include "cli/ConsoleSearchView.h"

namespace cvn73100 {

// The last search's table, kept beside the form ("form.json" -> "form.search.json") so that `cvnscope use ROW`
// in a later process picks the row the user saw. Saved whole or not at all.
class SearchResultsFile {
 public:
  explicit SearchResultsFile(const std::string& formPath);

  const std::string& Path() const { return m_path; }
  // The saved table; an empty one when the file does not exist. A malformed file raises an error.
  std::vector<TableRow> Load() const;
  void Save(const std::vector<TableRow>& table) const;

 private:
  std::string m_path;
};

}  // namespace cvn73100
