#include "server/SubObjects.h"

#include "server/ScpiText.h"

namespace cvn73100::server {
namespace {

using scpi::Argument;
using scpi::ChannelNode;
using scpi::DigitalNode;
using scpi::Keyword;
using scpi::Real;
using scpi::Reply;

constexpr Cvn73100_AcquisitionCount kAcquisitionCounts[] = {
    Cvn73100_AcquisitionCount_1,   Cvn73100_AcquisitionCount_4,  Cvn73100_AcquisitionCount_8,
    Cvn73100_AcquisitionCount_16,  Cvn73100_AcquisitionCount_32, Cvn73100_AcquisitionCount_64,
    Cvn73100_AcquisitionCount_128, Cvn73100_AcquisitionCount_256};
Cvn73100_OnOffState OnOff(bool on) { return on ? Cvn73100_On : Cvn73100_Off; }

constexpr Cvn73100_ProbeAttenuation kAttenuations[] = {Cvn73100_ProbeAttenuation_X1, Cvn73100_ProbeAttenuation_X10,
                                                       Cvn73100_ProbeAttenuation_X20, Cvn73100_ProbeAttenuation_X100};

class Acquisition final : public IAcquisition {
 public:
  explicit Acquisition(ScpiChannel& channel) : m(channel) {}
  Cvn73100_AcquisitionType Type() override {
    return static_cast<Cvn73100_AcquisitionType>(
        m.QueryKeyword(":ACQuire:TYPE?", scpi::ACQUISITION_TYPES, "acquisition type"));
  }
  void SetType(Cvn73100_AcquisitionType type) override {
    m.Set(":ACQuire:TYPE " + Keyword(type, scpi::ACQUISITION_TYPES, "acquisition type"));
  }
  Cvn73100_AcquisitionCount Count() override {
    return Reply<Cvn73100_AcquisitionCount>(m.QueryInteger(":ACQuire:COUNt?"), kAcquisitionCounts, "acquisition count");
  }
  void SetCount(Cvn73100_AcquisitionCount count) override {
    m.Set(":ACQuire:COUNt " + Argument<Cvn73100_AcquisitionCount>(count, kAcquisitionCounts, "acquisition count"));
  }

 private:
  ScpiChannel& m;
};

class AnalogChannels final : public IAnalogChannels {
 public:
  explicit AnalogChannels(ScpiChannel& channel) : m(channel) {}
  Cvn73100_OnOffState Display(Cvn73100_AnalogChannels channel) override {
    return OnOff(m.QueryBoolean(ChannelNode(channel) + ":DISPlay?"));
  }
  void SetDisplay(Cvn73100_AnalogChannels channel, Cvn73100_OnOffState state) override {
    m.Set(ChannelNode(channel) + ":DISPlay " + Keyword(state, scpi::ON_OFF, "display state"));
  }
  Cvn73100_ProbeCoupling Coupling(Cvn73100_AnalogChannels channel) override {
    return static_cast<Cvn73100_ProbeCoupling>(
        m.QueryKeyword(ChannelNode(channel) + ":COUPling?", scpi::CHANNEL_COUPLINGS, "coupling"));
  }
  void SetCoupling(Cvn73100_AnalogChannels channel, Cvn73100_ProbeCoupling coupling) override {
    m.Set(ChannelNode(channel) + ":COUPling " + Keyword(coupling, scpi::CHANNEL_COUPLINGS, "coupling"));
  }
  Cvn73100_ProbeAttenuation ProbeAttenuation(Cvn73100_AnalogChannels channel) override {
    return Reply<Cvn73100_ProbeAttenuation>(m.QueryInteger(ChannelNode(channel) + ":PROBe?"), kAttenuations,
                                            "probe attenuation");
  }
  void SetProbeAttenuation(Cvn73100_AnalogChannels channel, Cvn73100_ProbeAttenuation attenuation) override {
    m.Set(ChannelNode(channel) + ":PROBe " +
          Argument<Cvn73100_ProbeAttenuation>(attenuation, kAttenuations, "probe attenuation"));
  }
  double Range(Cvn73100_AnalogChannels channel) override { return m.QueryReal(ChannelNode(channel) + ":RANGe?"); }
  void SetRange(Cvn73100_AnalogChannels channel, double volts) override {
    m.Set(ChannelNode(channel) + ":RANGe " + Real(volts));
  }
  double Offset(Cvn73100_AnalogChannels channel) override { return m.QueryReal(ChannelNode(channel) + ":OFFSet?"); }
  void SetOffset(Cvn73100_AnalogChannels channel, double volts) override {
    m.Set(ChannelNode(channel) + ":OFFSet " + Real(volts));
  }

 private:
  ScpiChannel& m;
};

class LogicChannel final : public ILogicChannel {
 public:
  explicit LogicChannel(ScpiChannel& channel) : m(channel) {}
  Cvn73100_OnOffState Display(Cvn73100_LogicBits bit) override {
    return OnOff(m.QueryBoolean(DigitalNode(bit) + ":DISPlay?"));
  }
  void SetDisplay(Cvn73100_LogicBits bit, Cvn73100_OnOffState state) override {
    m.Set(DigitalNode(bit) + ":DISPlay " + Keyword(state, scpi::ON_OFF, "display state"));
  }

 private:
  ScpiChannel& m;
};

// Measurements of the record on screen; one the instrument cannot make reads as NaN.
class Measure final : public IMeasure {
 public:
  explicit Measure(ScpiChannel& channel) : m(channel) {}
  double Frequency(Cvn73100_AnalogChannels channel) override { return Query(":MEASure:FREQuency? ", channel); }
  double VPP(Cvn73100_AnalogChannels channel) override { return Query(":MEASure:VPP? ", channel); }
  double VAverage(Cvn73100_AnalogChannels channel) override { return Query(":MEASure:VAVerage? ", channel); }

 private:
  double Query(const char* header, Cvn73100_AnalogChannels channel) {
    return m.QueryReal(header + ChannelNode(channel).substr(1));
  }
  ScpiChannel& m;
};

class Timebase final : public ITimebase {
 public:
  explicit Timebase(ScpiChannel& channel) : m(channel) {}
  Cvn73100_TimeMode Mode() override {
    return static_cast<Cvn73100_TimeMode>(m.QueryKeyword(":TIMebase:MODE?", scpi::TIME_MODES, "time mode"));
  }
  void SetMode(Cvn73100_TimeMode mode) override {
    m.Set(":TIMebase:MODE " + Keyword(mode, scpi::TIME_MODES, "time mode"));
  }
  double Range() override { return m.QueryReal(":TIMebase:RANGe?"); }
  void SetRange(double seconds) override { m.Set(":TIMebase:RANGe " + Real(seconds)); }
  double Delay() override { return m.QueryReal(":TIMebase:DELay?"); }
  void SetDelay(double seconds) override { m.Set(":TIMebase:DELay " + Real(seconds)); }
  Cvn73100_TimeReference Reference() override {
    return static_cast<Cvn73100_TimeReference>(
        m.QueryKeyword(":TIMebase:REFerence?", scpi::TIME_REFERENCES, "time reference"));
  }
  void SetReference(Cvn73100_TimeReference reference) override {
    m.Set(":TIMebase:REFerence " + Keyword(reference, scpi::TIME_REFERENCES, "time reference"));
  }

 private:
  ScpiChannel& m;
};

class Trigger final : public ITrigger {
 public:
  explicit Trigger(ScpiChannel& channel) : m(channel) {}
  Cvn73100_TriggerMode Mode() override {
    return static_cast<Cvn73100_TriggerMode>(m.QueryKeyword(":TRIGger:SWEep?", scpi::TRIGGER_SWEEPS, "trigger sweep"));
  }
  void SetMode(Cvn73100_TriggerMode mode) override {
    m.Set(":TRIGger:SWEep " + Keyword(mode, scpi::TRIGGER_SWEEPS, "trigger sweep"));
  }
  Cvn73100_TriggerSource Source() override {
    return static_cast<Cvn73100_TriggerSource>(
        m.QueryKeyword(":TRIGger:SOURce?", scpi::TRIGGER_SOURCES, "trigger source"));
  }
  void SetSource(Cvn73100_TriggerSource source) override {
    m.Set(":TRIGger:SOURce " + Keyword(source, scpi::TRIGGER_SOURCES, "trigger source"));
  }
  Cvn73100_TriggerSlope Slope() override {
    return static_cast<Cvn73100_TriggerSlope>(m.QueryKeyword(":TRIGger:SLOPe?", scpi::TRIGGER_SLOPES, "trigger slope"));
  }
  void SetSlope(Cvn73100_TriggerSlope slope) override {
    m.Set(":TRIGger:SLOPe " + Keyword(slope, scpi::TRIGGER_SLOPES, "trigger slope"));
  }
  double Level() override { return m.QueryReal(":TRIGger:LEVel?"); }
  void SetLevel(double volts) override { m.Set(":TRIGger:LEVel " + Real(volts)); }
  Cvn73100_TriggerCoupling Coupling() override {
    return static_cast<Cvn73100_TriggerCoupling>(
        m.QueryKeyword(":TRIGger:COUPling?", scpi::TRIGGER_COUPLINGS, "trigger coupling"));
  }
  void SetCoupling(Cvn73100_TriggerCoupling coupling) override {
    m.Set(":TRIGger:COUPling " + Keyword(coupling, scpi::TRIGGER_COUPLINGS, "trigger coupling"));
  }

 private:
  ScpiChannel& m;
};

// Analog channels A1..A4 are 1..4; logic bits D0..D15 are 10..25.
class Trace final : public ITrace {
 public:
  explicit Trace(ScpiChannel& channel) : m(channel) {}
  Cvn73100_OnOffState Display(Cvn73100_AllChannels channel) override {
    return OnOff(m.QueryBoolean(Node(channel) + ":DISPlay?"));
  }
  void SetDisplay(Cvn73100_AllChannels channel, Cvn73100_OnOffState state) override {
    m.Set(Node(channel) + ":DISPlay " + Keyword(state, scpi::ON_OFF, "display state"));
  }

 private:
  static std::string Node(Cvn73100_AllChannels channel) {
    if (channel >= Cvn73100_Channel_D0) return DigitalNode(channel - Cvn73100_Channel_D0);
    return ChannelNode(channel);
  }
  ScpiChannel& m;
};

}  // namespace

std::unique_ptr<IAcquisition> MakeAcquisition(ScpiChannel& channel) { return std::make_unique<Acquisition>(channel); }
std::unique_ptr<IAnalogChannels> MakeAnalogChannels(ScpiChannel& channel) {
  return std::make_unique<AnalogChannels>(channel);
}
std::unique_ptr<ILogicChannel> MakeLogicChannel(ScpiChannel& channel) {
  return std::make_unique<LogicChannel>(channel);
}
std::unique_ptr<IMeasure> MakeMeasure(ScpiChannel& channel) { return std::make_unique<Measure>(channel); }
std::unique_ptr<ITimebase> MakeTimebase(ScpiChannel& channel) { return std::make_unique<Timebase>(channel); }
std::unique_ptr<ITrigger> MakeTrigger(ScpiChannel& channel) { return std::make_unique<Trigger>(channel); }
std::unique_ptr<ITrace> MakeTrace(ScpiChannel& channel) { return std::make_unique<Trace>(channel); }

}  // namespace cvn73100::server
