#pragma once
#include <cstddef>
#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

namespace cvn73100 {

// Columns `text` (UTF-8) takes on a terminal: two for a CJK character, none for a combining mark. Text that is
// not valid UTF-8, or holds characters without a width, counts one column per byte.
std::size_t DisplayWidth(const std::string& text);

// `text` followed by blanks up to `width` columns.
std::string PadToWidth(const std::string& text, std::size_t width);

// A table printed in columns aligned by display width; the last column is not padded. Every table the
// command line prints goes through it, so translated headings line up as English ones do.
class TextTable {
 public:
  explicit TextTable(std::string indent = "", std::string gap = "  ") : m_indent(std::move(indent)), m_gap(std::move(gap)) {}
  void Add(std::vector<std::string> cells) { m_rows.push_back(std::move(cells)); }
  void Print(std::ostream& out) const;

 private:
  std::string m_indent;
  std::string m_gap;
  std::vector<std::vector<std::string>> m_rows;
};

// Labelled values, one per line: "label:" padded so that the values start in one column.
void PrintFields(std::ostream& out, const std::vector<std::pair<std::string, std::string>>& fields,
                 const std::string& indent = "");

}  // namespace cvn73100
