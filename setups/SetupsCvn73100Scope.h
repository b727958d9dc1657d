#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/PropertyBag.h"
#include "platform/Variant.h"
#include "setups/SetupCvn73100Scope.h"

namespace cvn73100 {

class CCvn73100EZ;

// The ordered collection of a control's setups, keyed by name without regard to case, with the
// settings of the setup feature. It owns its setups; each setup refers back to it weakly, so the
// collection must be owned by a std::shared_ptr: create it with Create(). It refers to the instrument
// connection without owning it (the control owns the connection).
class SetupsCvn73100Scope : public std::enable_shared_from_this<SetupsCvn73100Scope> {
  struct CreateKey {
    explicit CreateKey() = default;
  };

 public:
  using Setup = std::shared_ptr<SetupCvn73100Scope>;
  using const_iterator = std::vector<Setup>::const_iterator;

  // A new empty collection whose InitialDirectory is the process's current directory.
  static std::shared_ptr<SetupsCvn73100Scope> Create();
  explicit SetupsCvn73100Scope(CreateKey);
  SetupsCvn73100Scope(const SetupsCvn73100Scope&) = delete;
  SetupsCvn73100Scope& operator=(const SetupsCvn73100Scope&) = delete;

  // Appends a new setup named `name` (with an Empty learn string; Add never talks to the instrument).
  // Empty names and names holding " " or "|" raise error 380; a name already present in any case
  // raises the duplicate-key error (457). Nothing is added on failure.
  Setup Add(const std::string& name);
  // The member at a position (a number, counted from 1) or under a name (a text, case ignored). A
  // position outside 1..Count raises error 9, an unknown name error 5, an Empty index error 5 and any
  // other kind of value error 13.
  Setup item(const Variant& indexKey) const;
  Setup item(std::int32_t position) const;
  Setup item(const std::string& name) const;
  Setup item(const char* name) const { return item(std::string(name)); }
  std::int32_t Count() const { return static_cast<std::int32_t>(m_setups.size()); }
  // Removes the member at a position or under a name, with the errors of item. Only a name spelled
  // exactly as LastInstrumentSetup clears it; removing by position, or by the name in other case,
  // leaves it.
  void Remove(const Variant& indexKey);
  void Remove(std::int32_t position);
  void Remove(const std::string& name);
  void Remove(const char* name) { Remove(std::string(name)); }
  // The members in insertion order, as a snapshot that stays valid while the collection changes.
  std::vector<Setup> NewEnum() const { return m_setups; }
  // Iteration in insertion order; changing the collection invalidates the iterators.
  const_iterator begin() const { return m_setups.begin(); }
  const_iterator end() const { return m_setups.end(); }
  // Loads the settings and appends the stored setups (members already present stay). A stored name that
  // Add refuses stops the reading with Add's error; the setups read before it stay.
  void ReadProperties(const PropertyBag& bag);
  void WriteProperties(PropertyBag& bag) const;
  // Makes this collection an independent copy of `source`: settings and members (fresh setups with the
  // same contents). The connection is not copied.
  void Copy(const SetupsCvn73100Scope& source);
  // The instrument connection; null (asserted) when none is set or it no longer exists.
  std::shared_ptr<CCvn73100EZ> CCvn73100EZPtr() const;
  // Refers to `connection` without owning it and re-parents every member to this collection.
  void SetCCvn73100EZPtr(const std::shared_ptr<CCvn73100EZ>& connection);
  // Folder in which the setup-file dialogs open.
  const std::string& InitialDirectory() const { return m_strInitialDirectory; }
  void SetInitialDirectory(const std::string& directory) { m_strInitialDirectory = directory; }
  // Whether the Setups page fetches the learn string when a setup is added.
  bool GetLearnStringOnAdd() const { return m_bGetLearnStringOnAdd; }
  void SetGetLearnStringOnAdd(bool value) { m_bGetLearnStringOnAdd = value; }
  // Name of the setup last fetched from or sent to the instrument; not checked against the members.
  const std::string& LastInstrumentSetup() const { return m_strLastInstrumentSetup; }
  void SetLastInstrumentSetup(const std::string& name) { m_strLastInstrumentSetup = name; }

 private:
  std::size_t PositionOf(const Variant& indexKey) const;
  std::size_t PositionOf(std::int32_t position) const;
  std::size_t PositionOf(const std::string& name) const;
  void RemoveAt(std::size_t position);

  // Parallel lists: a setup may be renamed, but its key stays the name it was added under.
  std::vector<std::string> m_keys;
  std::vector<Setup> m_setups;
  std::weak_ptr<CCvn73100EZ> m_ccvn73100ez;
  std::string m_strInitialDirectory;
  bool m_bGetLearnStringOnAdd = true;
  std::string m_strLastInstrumentSetup;
};

}  // namespace cvn73100
