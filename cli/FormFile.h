#pragma once
#include <string>

#include "platform/PropertyBag.h"

namespace cvn73100 {

// The control's saved properties as a JSON file: the property bag that cvnscope, cvnscope-gui and
// the Python module share. Saved whole or not at all.
class FormFile {
 public:
  explicit FormFile(std::string path);

  // The default form: $XDG_CONFIG_HOME/cvn73100/form.json (or ~/.config/cvn73100/form.json).
  static std::string DefaultPath();

  const std::string& Path() const { return m_path; }
  // Reads the file into `bag`; a missing file leaves it empty. A malformed file raises an error.
  void Load(MemoryPropertyBag& bag) const;
  // Writes `bag` to a temporary file beside the form, then renames it over the form.
  void Save(const MemoryPropertyBag& bag) const;
  // Saves what a command changed from `base` (the form as it read it) to `mine`, as one step against other
  // processes: under an exclusive lock on a file beside the form it reads the form again, keeps what others
  // changed meanwhile, applies these changes and saves. Returns the form as saved. Waits at most
  // LOCK_WAIT_MS for the lock.
  MemoryPropertyBag SaveChanges(const MemoryPropertyBag& base, const MemoryPropertyBag& mine) const;

  static constexpr int LOCK_WAIT_MS = 30000;

  // The JSON text of a bag and back (exposed for the fuzzer and the tests).
  static std::string ToJson(const MemoryPropertyBag& bag);
  static void FromJson(const std::string& text, MemoryPropertyBag& bag);

 private:
  std::string m_path;
};

}  // namespace cvn73100
