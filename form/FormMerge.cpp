#include "form/FormMerge.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "setups/SetupCvn73100Scope.h"

namespace cvn73100 {
namespace {

constexpr const char* SETUP_COUNT = "SetupCount";

// A setup as saved: its name and its keys without the index, as the bag holds them.
struct SavedSetup {
  std::string name;
  MemoryPropertyBag keys;
};

// A form taken apart: the properties of the control, and the setups in their order.
struct FormParts {
  MemoryPropertyBag properties;
  std::vector<SavedSetup> setups;

  const SavedSetup* Find(const std::string& name) const {
    const auto it = std::find_if(setups.begin(), setups.end(), [&](const SavedSetup& s) { return s.name == name; });
    return it == setups.end() ? nullptr : &*it;
  }
};

// Whether `key` is one of a setup's keys: a setup word followed by an index.
bool IsSetupKey(const std::string& key) {
  for (const std::string_view word : SetupCvn73100Scope::PROPERTY_WORDS) {
    if (key.size() > word.size() && key.compare(0, word.size(), word) == 0 &&
        std::all_of(key.begin() + static_cast<std::ptrdiff_t>(word.size()), key.end(),
                    [](unsigned char c) { return std::isdigit(c); }))
      return true;
  }
  return false;
}

FormParts Split(const MemoryPropertyBag& bag) {
  FormParts parts;
  for (const auto& [key, value] : bag.Entries())
    if (key != SETUP_COUNT && !IsSetupKey(key)) parts.properties.Set(key, value);
  const Variant count = bag.ReadProperty(SETUP_COUNT, Variant(0));
  const long n = count.GetType() == Variant::Type::Integer || count.GetType() == Variant::Type::Long ? count.AsLong() : 0;
  for (long index = 1; index <= n; ++index) {
    SavedSetup setup;
    for (const char* word : SetupCvn73100Scope::PROPERTY_WORDS) {
      const std::string key = word + std::to_string(index);
      if (bag.Contains(key)) setup.keys.Set(word, bag.ReadProperty(key, Variant()));
    }
    const Variant name = setup.keys.ReadProperty(SetupCvn73100Scope::PROPERTY_WORDS[0],
                                                 Variant(SetupCvn73100Scope::DEFAULT_NAME));
    setup.name = name.GetType() == Variant::Type::String ? name.AsString() : std::string();
    parts.setups.push_back(std::move(setup));
  }
  return parts;
}

MemoryPropertyBag Join(const FormParts& parts) {
  MemoryPropertyBag bag = parts.properties;
  if (!parts.setups.empty()) bag.Set(SETUP_COUNT, Variant(static_cast<std::int32_t>(parts.setups.size())));
  for (std::size_t i = 0; i < parts.setups.size(); ++i)
    for (const auto& [word, value] : parts.setups[i].keys.Entries()) bag.Set(word + std::to_string(i + 1), value);
  return bag;
}

std::optional<Variant> Value(const MemoryPropertyBag& bag, const std::string& key) {
  if (!bag.Contains(key)) return std::nullopt;
  return bag.ReadProperty(key, Variant());
}

}  // namespace

MemoryPropertyBag MergeForms(const MemoryPropertyBag& base, const MemoryPropertyBag& mine,
                             const MemoryPropertyBag& current) {
  const FormParts was = Split(base), wanted = Split(mine);
  FormParts merged = Split(current);

  const auto changed = [&](const std::string& key) { return Value(was.properties, key) != Value(wanted.properties, key); };
  MemoryPropertyBag properties;
  for (const auto& [key, value] : merged.properties.Entries()) {
    if (!changed(key))
      properties.Set(key, value);
    else if (wanted.properties.Contains(key))
      properties.Set(key, wanted.properties.ReadProperty(key, Variant()));
  }
  for (const auto& [key, value] : wanted.properties.Entries())
    if (!properties.Contains(key) && changed(key)) properties.Set(key, value);
  merged.properties = std::move(properties);

  for (const SavedSetup& old : was.setups) {
    if (wanted.Find(old.name)) continue;
    std::erase_if(merged.setups, [&](const SavedSetup& s) { return s.name == old.name; });
  }
  for (const SavedSetup& setup : wanted.setups) {
    const SavedSetup* old = was.Find(setup.name);
    if (old && old->keys.Entries() == setup.keys.Entries()) continue;
    const auto it = std::find_if(merged.setups.begin(), merged.setups.end(),
                                 [&](const SavedSetup& s) { return s.name == setup.name; });
    if (it == merged.setups.end())
      merged.setups.push_back(setup);
    else
      *it = setup;
  }
  return Join(merged);
}

}  // namespace cvn73100
