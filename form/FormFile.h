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

  // The JSON text of a bag and back (exposed for the fuzzer and the tests).
  static std::string ToJson(const MemoryPropertyBag& bag);
  static void FromJson(const std::string& text, MemoryPropertyBag& bag);

 private:
  std::string m_path;
};

}  // namespace cvn73100
