#pragma once
#include <cstddef>
#include <functional>
#include <string>

#include "platform/PropertyBag.h"

namespace cvn73100 {

// The control's saved properties as a JSON file: the property bag that cvnscope, cvnscope-gui and
// the Python module share. Saved whole or not at all.
class FormFile {
 public:
  // Told what happened when a damaged form had to be put aside.
  using Notice = std::function<void(const std::string&)>;

  // The largest form read or written. A learn string (at most 1 MiB) takes twice its size here, so a form
  // holds dozens of the largest setups; a save that would outgrow it is refused, so that every form
  // written can be read back.
  static constexpr std::size_t MAX_SIZE = std::size_t{64} << 20;

  explicit FormFile(std::string path);

  // The default form: $XDG_CONFIG_HOME/cvn73100/form.json (or ~/.config/cvn73100/form.json).
  static std::string DefaultPath();

  const std::string& Path() const { return m_path; }
  // Reads the file into `bag`; a missing file leaves it empty. A damaged form (its file, line and reason
  // told to `notice`, standard error by default) is kept aside as "<form>.damaged-<time>" and read as
  // empty, so that the command goes on with a fresh form.
  void Load(MemoryPropertyBag& bag, const Notice& notice = {}) const;
  // Writes `bag` to a temporary file beside the form, then renames it over the form.
  void Save(const MemoryPropertyBag& bag) const;
  // Saves what a command changed from `base` (the form as it read it) to `mine`, as one step against other
  // processes: under an exclusive lock on a file beside the form it reads the form again, keeps what others
  // changed meanwhile, applies these changes and saves. Returns the form as saved. Waits at most
  // LOCK_WAIT_MS for the lock.
  MemoryPropertyBag SaveChanges(const MemoryPropertyBag& base, const MemoryPropertyBag& mine,
                                const Notice& notice = {}) const;

  static constexpr int LOCK_WAIT_MS = 30000;

  // The JSON text of a bag and back (exposed for the fuzzer and the tests).
  static std::string ToJson(const MemoryPropertyBag& bag);
  static void FromJson(const std::string& text, MemoryPropertyBag& bag);

 private:
  // Load with the form's lock held: puts a damaged form aside itself.
  void LoadLocked(MemoryPropertyBag& bag, const Notice& notice) const;

  std::string m_path;
};

}  // namespace cvn73100
