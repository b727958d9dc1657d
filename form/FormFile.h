#pragma once
#include <cstddef>
#include <functional>
#include <string>

#include "platform/PropertyBag.h"

namespace cvn73100 {

// The control's saved properties as a JSON file: the property bag that cvnscope, cvnscope-gui and
// the Python module share. It is only ever replaced whole, and only changed under its lock (FormLock):
// read as it is now, changed, written.
class FormFile {
 public:
  // Told what happened when a damaged form had to be put aside.
  using Notice = std::function<void(const std::string&)>;

  // The largest form read or written. A learn string (at most 1 MiB) takes twice its size in the file,
  // so the form holds dozens of the largest setups; a change that would outgrow it is refused.
  static constexpr std::size_t MAX_SIZE = std::size_t{64} << 20;

  explicit FormFile(std::string path);

  // The default form: $XDG_CONFIG_HOME/cvn73100/form.json (or ~/.config/cvn73100/form.json).
  static std::string DefaultPath();

  const std::string& Path() const { return m_path; }
  // Reads the file into `bag`; a missing file leaves it empty. A damaged form (its file, line and
  // reason told to `notice`, standard error by default) is kept aside as "<form>.damaged-<time>" and
  // read as empty, so that the command goes on with a fresh form.
  void Load(MemoryPropertyBag& bag, const Notice& notice = {}) const;
  // Replaces the form by `bag`.
  void Save(const MemoryPropertyBag& bag) const;
  // Under the lock, reads the form as it is now, lets `change` change it and writes it when it did.
  // Returns whether it wrote.
  bool Change(const std::function<void(MemoryPropertyBag&)>& change, const Notice& notice = {}) const;
  // Carries the changes from `base` (the form as it was read) to `mine` over to the form as it is now
  // (see MergeForms), so that what others changed meanwhile stays. Returns whether it wrote.
  bool Merge(const MemoryPropertyBag& base, const MemoryPropertyBag& mine, const Notice& notice = {}) const;

  // The JSON text of a bag and back (exposed for the fuzzer and the tests).
  static std::string ToJson(const MemoryPropertyBag& bag);
  static void FromJson(const std::string& text, MemoryPropertyBag& bag);
  // `bag` as it reads back from its JSON text (a 16-bit integer comes back as a 32-bit one).
  static MemoryPropertyBag AsStored(const MemoryPropertyBag& bag);

 private:
  // Load with the lock held: puts a damaged form aside itself.
  void LoadLocked(MemoryPropertyBag& bag, const Notice& notice) const;
  void Write(const MemoryPropertyBag& bag) const;

  std::string m_path;
};

}  // namespace cvn73100
