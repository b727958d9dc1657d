#include "platform/PropertyBag.h"

#include <cstddef>

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
  const auto it = m_positions.find(key);
  return it == m_positions.end() ? defaultValue : m_entries[it->second].second;
}

void MemoryPropertyBag::WriteProperty(const std::string& key, const Variant& value, const Variant& defaultValue) {
  if (value == defaultValue)
    Remove(key);
  else
    Set(key, value);
}

bool MemoryPropertyBag::Contains(const std::string& key) const { return m_positions.contains(key); }

void MemoryPropertyBag::Set(const std::string& key, Variant value) {
  const auto [it, added] = m_positions.try_emplace(key, m_entries.size());
  if (added)
    m_entries.emplace_back(key, std::move(value));
  else
    m_entries[it->second].second = std::move(value);
}

void MemoryPropertyBag::Remove(const std::string& key) {
  const auto it = m_positions.find(key);
  if (it == m_positions.end()) return;
  const std::size_t position = it->second;
  m_positions.erase(it);
  m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(position));
  for (std::size_t i = position; i < m_entries.size(); ++i) m_positions[m_entries[i].first] = i;
}

}  // namespace cvn73100
