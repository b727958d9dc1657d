#pragma once
#include <string>

#include "platform/Variant.h"

namespace cvn73100 {

// One setup-file format. A setup asks each format in turn whether it recognises a file, then reads
// it through these properties; saving fills the properties and calls WriteFile. An object serves one
// operation and is then dropped.
class ISetupFile {
 public:
  virtual ~ISetupFile() = default;

  // True when the file at `fileName` is of this format. Never raises: any failure means false.
  virtual bool IsACompatibleFile(const std::string& fileName) noexcept = 0;
  // Instrument model of the setup.
  virtual const std::string& Model() const = 0;
  virtual void SetModel(const std::string& model) = 0;
  // The instrument state: Empty or bytes only the instrument understands.
  virtual const cvn73100::LearnString& LearnString() const = 0;
  virtual void SetLearnString(const cvn73100::LearnString& learnString) = 0;
  virtual const std::string& UserComments() const = 0;
  virtual void SetUserComments(const std::string& comments) = 0;
  // Instrument firmware version.
  virtual const std::string& Version() const = 0;
  virtual void SetVersion(const std::string& version) = 0;
  // Writes the properties to `fileName`; raises the setup-file error (31037) on failure.
  virtual void WriteFile(const std::string& fileName) = 0;
  // Reads `fileName` into the properties; raises the setup-file error (31037) on failure, leaving the
  // properties read before the failure changed.
  virtual void ReadFile(const std::string& fileName) = 0;
  // Instrument serial number (kept in the file, not used elsewhere).
  virtual const std::string& SerialNumber() const = 0;
  virtual void SetSerialNumber(const std::string& serialNumber) = 0;
  virtual const std::string& ReservedField1() const = 0;
  virtual void SetReservedField1(const std::string& value) = 0;
  virtual const std::string& ReservedField2() const = 0;
  virtual void SetReservedField2(const std::string& value) = 0;
  virtual const std::string& ReservedField3() const = 0;
  virtual void SetReservedField3(const std::string& value) = 0;
  // Instrument maker.
  virtual const std::string& Manufacturer() const = 0;
  virtual void SetManufacturer(const std::string& manufacturer) = 0;
};

}  // namespace cvn73100
