#include "cli/CliText.h"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string_view>
#include <vector>

#include "dialogs/LanguageSelection.h"
#include "dialogs/Messages.h"
#include "form/FormFile.h"
#include "platform/Os.h"

namespace cvn73100 {

std::string CliText(int number, std::initializer_list<std::string> args) {
  const std::string text = Messages::Load(number);
  const std::vector<std::string> values(args);
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool placeholder = text[i] == '{' && i + 2 < text.size() && text[i + 1] >= '1' && text[i + 1] <= '9' &&
                             text[i + 2] == '}';
    const std::size_t index = placeholder ? static_cast<std::size_t>(text[i + 1] - '1') : 0;
    if (placeholder && index < values.size()) {
      out += values[index];
      i += 2;
    } else {
      out += text[i];
    }
  }
  return out;
}

namespace {

// The value of `--name VALUE` or `--name=VALUE`, the last one given.
std::optional<std::string> OptionValue(int argc, const char* const* argv, std::string_view name) {
  std::optional<std::string> value;
  for (int i = 1; i < argc; ++i) {
    const std::string_view arg = argv[i];
    if (arg == "--") break;
    if (arg == name && i + 1 < argc) value = argv[++i];
    else if (arg.size() > name.size() && arg.substr(0, name.size()) == name && arg[name.size()] == '=')
      value = std::string(arg.substr(name.size() + 1));
  }
  return value;
}

std::optional<int> BaseOf(std::int32_t country) {
  const std::optional<int> base = LanguageSelection::BaseOfCountry(country);
  if (!base) return std::nullopt;
  const int codePage = LanguageSelection::CodePageOfBase(*base);
  if (codePage != 0 && !Os::Current().CodePageIsDoubleByte(codePage)) return std::nullopt;
  return base;
}

std::optional<std::int32_t> FormCountry(const std::string& path) {
  std::error_code ec;
  if (!std::filesystem::is_regular_file(path, ec) || std::filesystem::file_size(path, ec) > FormFile::MAX_SIZE)
    return std::nullopt;
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  std::ostringstream text;
  text << in.rdbuf();
  try {
    MemoryPropertyBag bag;
    FormFile::FromJson(text.str(), bag);
    return bag.ReadLong("CountryCode", 0);
  } catch (const std::exception&) {
    return std::nullopt;  // the command that opens the form reports the damage
  }
}

}  // namespace

int RunLanguageBase(int argc, const char* const* argv, const std::string& defaultForm) {
  if (const auto country = OptionValue(argc, argv, "--country")) {
    std::int32_t code = 0;
    const char* end = country->data() + country->size();
    const auto [ptr, ec] = std::from_chars(country->data(), end, code);
    if (ec == std::errc() && ptr == end) {
      if (const auto base = BaseOf(code)) return *base;
    }
    return Messages::ENGLISH;
  }
  const std::string form = OptionValue(argc, argv, "--form").value_or(defaultForm);
  if (const auto code = form.empty() ? std::nullopt : FormCountry(form)) {
    if (const auto base = BaseOf(*code)) return *base;
  }
  return Messages::ENGLISH;
}

}  // namespace cvn73100
