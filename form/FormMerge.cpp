#include "form/FormMerge.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "setups/SetupCvn73100Scope.h"

namespace cvn73100 {
namespace {

constexpr const char* SETUP_COUNT_KEY = "SetupCount";

// Setup names are matched as the collection matches them: case ignored.
std::string Folded(std::string name) {
  std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
  return name;
}

template <class Setups>
auto FindSetup(Setups& setups, const std::string& name) {
  return std::find_if(setups.begin(), setups.end(), [&](const auto& s) { return Folded(s.first) == Folded(name); });
}

// A form split into its setups (name and the setup's own properties, in order) and everything else.
struct SplitForm {
  std::vector<std::pair<std::string, MemoryPropertyBag>> setups;
  MemoryPropertyBag rest;

  explicit SplitForm(const MemoryPropertyBag& bag) {
    std::set<std::string> setupKeys{SETUP_COUNT_KEY};
    const auto count = bag.ReadInteger(SETUP_COUNT_KEY, 0);
    for (std::int16_t i = 1; i <= count; ++i) {
      SetupCvn73100Scope setup;
      setup.ReadProperties(bag, i);
      MemoryPropertyBag own;
      setup.WriteProperties(own, 1);
      // The keys the setup was read from, found by writing it back at its own index.
      MemoryPropertyBag written;
      setup.WriteProperties(written, i);
      for (const auto& entry : written.Entries()) setupKeys.insert(entry.first);
      setups.emplace_back(setup.Name(), std::move(own));
    }
    for (const auto& [key, value] : bag.Entries()) {
      if (!setupKeys.contains(key)) rest.Set(key, value);
    }
  }

  const MemoryPropertyBag* Setup(const std::string& name) const {
    const auto found = FindSetup(setups, name);
    return found == setups.end() ? nullptr : &found->second;
  }
};

bool SameEntries(const MemoryPropertyBag* a, const MemoryPropertyBag* b) {
  if (!a || !b) return a == b;
  return a->Entries() == b->Entries();
}

std::set<std::string> Names(const SplitForm& form) {
  std::set<std::string> names;
  for (const auto& setup : form.setups) names.insert(Folded(setup.first));
  return names;
}

}  // namespace

MemoryPropertyBag MergeFormChanges(const MemoryPropertyBag& base, const MemoryPropertyBag& mine,
                                   const MemoryPropertyBag& current) {
  const SplitForm before(base), after(mine), now(current);

  MemoryPropertyBag merged = now.rest;
  std::set<std::string> keys;
  for (const auto& entry : before.rest.Entries()) keys.insert(entry.first);
  for (const auto& entry : after.rest.Entries()) keys.insert(entry.first);
  for (const std::string& key : keys) {
    const bool had = before.rest.Contains(key), has = after.rest.Contains(key);
    if (has && (!had || !(before.rest.ReadProperty(key, {}) == after.rest.ReadProperty(key, {})))) {
      merged.Set(key, after.rest.ReadProperty(key, {}));
    } else if (had && !has) {
      merged.Erase(key);
    }
  }

  std::vector<std::pair<std::string, MemoryPropertyBag>> setups = now.setups;
  std::set<std::string> names = Names(before);
  names.merge(Names(after));
  for (const std::string& name : names) {
    const MemoryPropertyBag* old = before.Setup(name);
    const MemoryPropertyBag* changed = after.Setup(name);
    if (SameEntries(old, changed)) continue;
    const auto found = FindSetup(setups, name);
    if (!changed) {
      if (found != setups.end()) setups.erase(found);
    } else if (found != setups.end()) {
      *found = {changed->ReadString("SetupName1", name), *changed};
    } else {
      setups.emplace_back(changed->ReadString("SetupName1", name), *changed);
    }
  }
  // Setups go where the control writes them: after the other properties, numbered from 1.
  merged.WriteProperty(SETUP_COUNT_KEY, Variant(static_cast<std::int32_t>(setups.size())), Variant(std::int32_t{0}));
  std::int16_t index = 0;
  for (const auto& setup : setups) {
    SetupCvn73100Scope copy;
    copy.ReadProperties(setup.second, 1);
    copy.WriteProperties(merged, ++index);
  }
  return merged;
}

}  // namespace cvn73100
