#pragma once
#include <string>
#include <utility>

#include "setups/ISetupFile.h"

namespace cvn73100 {

// The stored properties every setup-file format shares; the formats add reading and writing.
class SetupFileProperties : public ISetupFile {
 public:
  static constexpr const char* DEFAULT_MANUFACTURER = "Corvane Technologies";

  const std::string& Model() const override { return m_strModel; }
  void SetModel(const std::string& model) override { m_strModel = model; }
  const cvn73100::LearnString& LearnString() const override { return m_vntLearnString; }
  void SetLearnString(const cvn73100::LearnString& learnString) override { m_vntLearnString = learnString; }
  const std::string& UserComments() const override { return m_strUserComments; }
  void SetUserComments(const std::string& comments) override { m_strUserComments = comments; }
  const std::string& Version() const override { return m_strVersion; }
  void SetVersion(const std::string& version) override { m_strVersion = version; }
  const std::string& SerialNumber() const override { return m_strSerialNumber; }
  void SetSerialNumber(const std::string& serialNumber) override { m_strSerialNumber = serialNumber; }
  const std::string& ReservedField1() const override { return m_strReservedField1; }
  void SetReservedField1(const std::string& value) override { m_strReservedField1 = value; }
  const std::string& ReservedField2() const override { return m_strReservedField2; }
  void SetReservedField2(const std::string& value) override { m_strReservedField2 = value; }
  const std::string& ReservedField3() const override { return m_strReservedField3; }
  void SetReservedField3(const std::string& value) override { m_strReservedField3 = value; }
  const std::string& Manufacturer() const override { return m_strManufacturer; }
  void SetManufacturer(const std::string& manufacturer) override { m_strManufacturer = manufacturer; }

 protected:
  // Moves the learn string in without a copy (file data can be large).
  void TakeLearnString(cvn73100::LearnString&& learnString) { m_vntLearnString = std::move(learnString); }

 private:
  std::string m_strModel;
  cvn73100::LearnString m_vntLearnString;
  std::string m_strUserComments;
  std::string m_strVersion;
  std::string m_strSerialNumber;
  std::string m_strReservedField1;
  std::string m_strReservedField2;
  std::string m_strReservedField3;
  std::string m_strManufacturer = DEFAULT_MANUFACTURER;
};

}  // namespace cvn73100
