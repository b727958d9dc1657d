#pragma once
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/Variant.h"

namespace cvn73100 {

// The host's store of a control's saved properties. Values read back are outside input: the typed
// readers convert what they find and raise the type-mismatch error (13) when they cannot.
class PropertyBag {
 public:
  virtual ~PropertyBag() = default;

  // The stored value of `key`, or `defaultValue` when the key is absent.
  virtual Variant ReadProperty(const std::string& key, const Variant& defaultValue) const = 0;
  // Stores `value` under `key`; a value equal to `defaultValue` is not stored (an earlier one is dropped).
  virtual void WriteProperty(const std::string& key, const Variant& value, const Variant& defaultValue) = 0;

  bool ReadBoolean(const std::string& key, bool defaultValue) const;
  std::int16_t ReadInteger(const std::string& key, std::int16_t defaultValue) const;
  std::int32_t ReadLong(const std::string& key, std::int32_t defaultValue) const;
  std::string ReadString(const std::string& key, const std::string& defaultValue) const;
};

// A property bag in memory, keeping keys in the order they were first written.
class MemoryPropertyBag : public PropertyBag {
 public:
  Variant ReadProperty(const std::string& key, const Variant& defaultValue) const override;
  void WriteProperty(const std::string& key, const Variant& value, const Variant& defaultValue) override;

  bool Contains(const std::string& key) const;
  // Stores a value as it is, default or not (for loading a bag from a file).
  void Set(const std::string& key, Variant value);
  void Erase(const std::string& key);
  void Clear() {
    m_entries.clear();
    m_index.clear();
  }
  // In the order the keys were first written.
  const std::vector<std::pair<std::string, Variant>>& Entries() const { return m_entries; }

 private:
  const Variant* Find(const std::string& key) const;

  std::vector<std::pair<std::string, Variant>> m_entries;
  std::unordered_map<std::string, std::size_t> m_index;  // key -> position in m_entries
};

}  // namespace cvn73100
