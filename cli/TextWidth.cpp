#include "cli/TextWidth.h"

#include <locale.h>
#include <wchar.h>

#include <algorithm>
#include <cstdlib>
#include <ostream>

namespace cvn73100 {
namespace {

// A UTF-8 character-type locale for the conversion, whatever the process's own locale is.
locale_t Utf8Locale() {
  static const locale_t locale = [] {
    for (const char* name : {"C.UTF-8", "C.utf8", "en_US.UTF-8"}) {
      if (locale_t l = ::newlocale(LC_CTYPE_MASK, name, static_cast<locale_t>(0))) return l;
    }
    return static_cast<locale_t>(0);
  }();
  return locale;
}

}  // namespace

std::size_t DisplayWidth(const std::string& text) {
  const locale_t utf8 = Utf8Locale();
  if (utf8 == static_cast<locale_t>(0)) return text.size();
  const locale_t previous = ::uselocale(utf8);
  std::size_t width = text.size();
  std::wstring wide(text.size() + 1, L'\0');
  const std::size_t length = std::mbstowcs(wide.data(), text.c_str(), wide.size());
  if (length != static_cast<std::size_t>(-1)) {
    const int columns = ::wcswidth(wide.data(), length);
    if (columns >= 0) width = static_cast<std::size_t>(columns);
  }
  ::uselocale(previous);
  return width;
}

std::string PadToWidth(const std::string& text, std::size_t width) {
  const std::size_t used = DisplayWidth(text);
  return used >= width ? text : text + std::string(width - used, ' ');
}

void TextTable::Print(std::ostream& out) const {
  std::vector<std::size_t> widths;
  for (const auto& row : m_rows) {
    if (widths.size() < row.size()) widths.resize(row.size(), 0);
    for (std::size_t c = 0; c + 1 < row.size(); ++c) widths[c] = std::max(widths[c], DisplayWidth(row[c]));
  }
  for (const auto& row : m_rows) {
    std::string line = m_indent;
    for (std::size_t c = 0; c < row.size(); ++c) {
      if (c > 0) line += m_gap;
      line += c + 1 < row.size() ? PadToWidth(row[c], widths[c]) : row[c];
    }
    // Cells left empty at the end leave no trailing blanks.
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << "\n";
  }
}

void PrintFields(std::ostream& out, const std::vector<std::pair<std::string, std::string>>& fields,
                 const std::string& indent) {
  TextTable table(indent, " ");
  for (const auto& [label, value] : fields) table.Add({label + ":", value});
  table.Print(out);
}

}  // namespace cvn73100
