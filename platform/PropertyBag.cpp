#include "platform/PropertyBag.h"

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

const Variant* MemoryPropertyBag::Find(const std::string& key) const {
  const auto found = m_index.find(key);
  return found == m_index.end() ? nullptr : &m_entries[found->second].second;
}

Variant MemoryPropertyBag::ReadProperty(const std::string& key, const Variant& defaultValue) const {
  const Variant* value = Find(key);
  return value ? *value : defaultValue;
}

void MemoryPropertyBag::WriteProperty(const std::string& key, const Variant& value, const Variant& defaultValue) {
  if (value == defaultValue) {
    Erase(key);
    return;
  }
  Set(key, value);
}

bool MemoryPropertyBag::Contains(const std::string& key) const { return m_index.contains(key); }

void MemoryPropertyBag::Set(const std::string& key, Variant value) {
  const auto [found, added] = m_index.try_emplace(key, m_entries.size());
  if (added)
    m_entries.emplace_back(key, std::move(value));
  else
    m_entries[found->second].second = std::move(value);
}

void MemoryPropertyBag::Erase(const std::string& key) {
  const auto found = m_index.find(key);
  if (found == m_index.end()) return;
  const std::size_t position = found->second;
  m_index.erase(found);
  m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(position));
  for (std::size_t i = position; i < m_entries.size(); ++i) m_index[m_entries[i].first] = i;
}

}  // namespace cvn73100
