#include "platform/PropertyBag.h"

#include <algorithm>

namespace cvn73100 {

bool PropertyBag::ReadBoolean(const std::string& key, bool defaultValue) const {
  return ReadProperty(key, defaultValue).AsBool();
}

std::int16_t PropertyBag::ReadInteger(const std::string& key, std::int16_t defaultValue) const {
  return ReadProperty(key, defaultValue).AsInteger();
}

std::int32_t PropertyBag::ReadLong(const std::string& key, std::int32_t defaultValue) const {
  return ReadProperty(key, defaultValue).AsLong();
}

std::string PropertyBag::ReadString(const std::string& key, const std::string& defaultValue) const {
  return ReadProperty(key, defaultValue).AsString();
}

Variant MemoryPropertyBag::ReadProperty(const std::string& key, const Variant& defaultValue) const {
  auto it = std::find_if(m_entries.begin(), m_entries.end(), [&](const auto& e) { return e.first == key; });
  return it == m_entries.end() ? defaultValue : it->second;
}

void MemoryPropertyBag::WriteProperty(const std::string& key, const Variant& value, const Variant& defaultValue) {
  if (value == defaultValue) {
    std::erase_if(m_entries, [&](const auto& e) { return e.first == key; });
    return;
  }
  Set(key, value);
}

bool MemoryPropertyBag::Contains(const std::string& key) const {
  return std::any_of(m_entries.begin(), m_entries.end(), [&](const auto& e) { return e.first == key; });
}

void MemoryPropertyBag::Set(const std::string& key, Variant value) {
  auto it = std::find_if(m_entries.begin(), m_entries.end(), [&](const auto& e) { return e.first == key; });
  if (it == m_entries.end())
    m_entries.emplace_back(key, std::move(value));
  else
    it->second = std::move(value);
}

}  // namespace cvn73100
