#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "platform/PropertyBag.h"
#include "platform/Variant.h"

namespace cvn73100 {

class SetupsCvn73100Scope;

// One saved instrument setup: the learn string fetched from an oscilloscope, the model and firmware
// version that produced it, and the user's name and comments. It reaches the instrument through the
// connection of its parent collection. Setups are normally created by SetupsCvn73100Scope::Add.
class SetupCvn73100Scope {
 public:
  static constexpr const char* DEFAULT_NAME = "Setup1";
  // A setup with this version suits every firmware of its model.
  static constexpr const char* WILDCARD_VERSION = "X.XX.XX";

  SetupCvn73100Scope() = default;
  SetupCvn73100Scope(const SetupCvn73100Scope&) = delete;
  SetupCvn73100Scope& operator=(const SetupCvn73100Scope&) = delete;

  const std::string& Comments() const { return m_strComments; }
  // Stores `comments` without leading and trailing spaces; text holding "|" raises error 380 and
  // leaves the comments as they were.
  void SetComments(const std::string& comments);
  const std::string& Name() const { return m_strName; }
  // Renames the setup (its key in the collection stays). Empty text or text holding " " or "|" raises
  // error 380 and leaves the name as it was.
  void SetNewName(const std::string& name);
  // Loads the five keys of setup `index` (counted from 1) as they are, without the name and comment
  // checks. A stored learn string that is no byte array raises the type-mismatch error (13).
  void ReadProperties(const PropertyBag& bag, std::int16_t index);
  void WriteProperties(PropertyBag& bag, std::int16_t index) const;
  // Takes name, comments, learn string, model and version of `source` (not its parent); name and
  // comments go through their checks, so a source holding invalid ones raises error 380.
  void Copy(const SetupCvn73100Scope& source);
  // Empty when the setup has not been fetched.
  cvn73100::LearnString LearnString() const { return m_vntLearnString; }
  const std::string& Model() const { return m_strModel; }
  const std::string& Version() const { return m_strVersion; }
  // Reads learn string, model and firmware version from the instrument of the parent's connection and
  // makes this setup the parent's LastInstrumentSetup. A failure raises the connection's or server's
  // error and leaves the setup as it was.
  void GetFromInstrument();
  // True when a setup of this model and version may be sent to an instrument reporting
  // `instrumentModel` and `instrumentVersion` (case ignored; version "X.XX.XX" matches any firmware).
  bool IsLearnStringCompatible(const std::string& instrumentModel, const std::string& instrumentVersion) const;
  // Loads learn string, model, version and comments from a native or Wrenfold setup file, recognised by
  // content. An unrecognised file raises error 321 (messages 670/674) and changes nothing; a damaged one
  // raises the setup-file error (31037) and changes nothing.
  void ReadFromFile(const std::string& fileName);
  // Writes the native setup file whatever the extension; raises the setup-file error (31037) on failure.
  void SaveToFile(const std::string& fileName) const;
  // Loads the learn string into the instrument when IsLearnStringCompatible holds for it; otherwise
  // raises error 17 (message 692 when the learn string is Empty, 691 otherwise) and sends nothing.
  void SendToInstrument();
  // The owning collection; null (asserted) when it has none or it no longer exists.
  std::shared_ptr<SetupsCvn73100Scope> ParentSetups() const;
  // The parent is held weakly: the collection owns its setups, never the other way round.
  void SetParentSetups(const std::shared_ptr<SetupsCvn73100Scope>& setups);

 private:
  std::string m_strComments;
  std::string m_strName = DEFAULT_NAME;
  cvn73100::LearnString m_vntLearnString;
  std::string m_strModel;
  std::string m_strVersion;
  std::weak_ptr<SetupsCvn73100Scope> m_setups;
};

}  // namespace cvn73100
