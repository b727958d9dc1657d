#pragma once
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "diagnostics/CDebug.h"
#include "dialogs/Messages.h"
#include "platform/Components.h"
#include "platform/ScopeError.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/TempDir.h"

namespace cvn73100::test {

// A scratch folder per test, and the support messages raised while the test runs.
class SetupFileTest : public ::testing::Test {
 protected:
  std::string Path(const std::string& name) const { return m_temp.Path(name); }
  std::string Make(const std::string& name, const std::string& bytes) const { return m_temp.Make(name, bytes); }
  bool Asserted(const std::string& className, const std::string& procedure) const {
    for (const auto& m : m_messages) {
      if (m.find("File: " + className + "\r\n") != std::string::npos &&
          m.find("Function: " + procedure + "\r\n") != std::string::npos)
        return true;
    }
    return false;
  }

  TempDir m_temp{"cvnsetups"};
  const std::filesystem::path& m_dir = m_temp.path();
  SupportLog m_support;
  std::vector<std::string>& m_messages = m_support.blocks;
};

inline bool IsCatalogueError(const ScopeError& e, std::int32_t code, int source, int description) {
  return e.Number() == ObjectError(code) && e.Source() == Messages::Load(source) &&
         e.Description() == Messages::Load(description);
}

// An instrument behind the automation server's Utilities, answering as the test sets it.
class FakeUtilities : public IUtilities {
 public:
  LearnString state = Bytes{0x23, 0x38, 0x01, 0x02};
  std::string model = "73135D";
  std::string version = "A.01.02";
  std::string failing;  // the one call that raises "device vanished"; "" for none
  std::vector<LearnString> written;

  std::string Manufacturer() override { return "CORVANE"; }
  std::string Model() override { return model; }
  std::string SerialNumber() override { return "0"; }
  std::string FirmwareVersion() override { return version; }
  void ResetInstrument() override {}
  bool CheckInstrumentID(std::int32_t, std::int32_t, std::int32_t) override { return true; }
  std::shared_ptr<IInstrumentIO> IOChannel() override { throw std::logic_error("no channel"); }
  LearnString ReadStateData() override { return Answer("ReadStateData", state); }
  void WriteStateData(const LearnString& learnString) override { written.push_back(learnString); }
  std::string InstrumentModel() override { return Answer("InstrumentModel", model); }
  std::string InstrumentFirmwareVersion() override { return Answer("InstrumentFirmwareVersion", version); }
  std::string QueryInstrumentError() override { return ""; }
  std::vector<std::string> DrainInstrumentErrors() override { return {}; }

 private:
  template <class T>
  T Answer(const char* call, const T& value) const {
    if (failing == call) throw ScopeError(ObjectError(1234), "Server", "device vanished");
    return value;
  }
};

// A server whose only working part is Utilities.
class FakeServer : public IAutomationServer {
 public:
  explicit FakeServer(std::shared_ptr<FakeUtilities> utilities) : m_utilities(std::move(utilities)) {}
  void OpenConnection(const std::string&, std::int32_t) override {}
  void CloseConnection() override {}
  std::string ConnectionName() override { return "fake"; }
  std::int32_t Timeout() const override { return 0; }
  void SetTimeout(std::int32_t) override {}
  IAcquisition& Acquisition() override { throw std::logic_error("unused"); }
  IAnalogChannels& AnalogChannels() override { throw std::logic_error("unused"); }
  ILogicChannel& LogicChannel() override { throw std::logic_error("unused"); }
  IMeasure& Measure() override { throw std::logic_error("unused"); }
  ITimebase& Timebase() override { throw std::logic_error("unused"); }
  ITrigger& Trigger() override { throw std::logic_error("unused"); }
  ITrace& Trace() override { throw std::logic_error("unused"); }
  IUtilities& Utilities() override { return *m_utilities; }
  void AutoScale() override {}
  void Digitize() override {}
  void Run() override {}
  void SingleTrigger() override {}
  void StopTrigger() override {}
  void Output(const Variant&) override {}
  void Enter(Variant&, const Variant&) override {}
  void ReadBytes(std::int32_t&, Bytes&) override {}
  void WriteBytes(std::int32_t, Bytes&) override {}
  void GetWaveformData(Cvn73100_AnalogChannels, Cvn73100_WaveformPoints, Variant&, Variant&) override {}
  void GetAllWaveformData(Cvn73100_WaveformPoints, Variant::Array&) override {}
  void GetLogicData(Cvn73100_WaveformPoints, Variant&, Variant&) override {}
  Picture GetScreenImage(Cvn73100_ImageFormat) override { return {}; }
  void SaveScreenImage(const std::string&, Cvn73100_ImageFormat) override {}

 private:
  std::shared_ptr<FakeUtilities> m_utilities;
};

inline void UseFakeServer(const std::shared_ptr<FakeUtilities>& utilities) {
  Components::SetServerFactory(
      [utilities](std::shared_ptr<IIOManager>) { return std::make_unique<FakeServer>(utilities); });
}

}  // namespace cvn73100::test
