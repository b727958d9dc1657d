#include "server/SubObjects.h"

#include "server/ScpiText.h"

namespace cvn73100::server {
namespace {

using scpi::Argument;
using scpi::ChannelNode;
using scpi::DigitalNode;
using scpi::Real;
using scpi::Reply;

constexpr Cvn73100_AcquisitionType kAcquisitionTypes[] = {
    Cvn73100_AcquisitionType_Average, Cvn73100_AcquisitionType_Peak, Cvn73100_AcquisitionType_Glitch,
    Cvn73100_AcquisitionType_Real,    Cvn73100_AcquisitionType_Auto, Cvn73100_AcquisitionType_Normal};
constexpr Cvn73100_AcquisitionCount kAcquisitionCounts[] = {
    Cvn73100_AcquisitionCount_1,   Cvn73100_AcquisitionCount_4,  Cvn73100_AcquisitionCount_8,
    Cvn73100_AcquisitionCount_16,  Cvn73100_AcquisitionCount_32, Cvn73100_AcquisitionCount_64,
    Cvn73100_AcquisitionCount_128, Cvn73100_AcquisitionCount_256};
constexpr Cvn73100_OnOffState kOnOff[] = {Cvn73100_Off, Cvn73100_On};
constexpr Cvn73100_ProbeCoupling kProbeCouplings[] = {Cvn73100_ProbeCoupling_DC, Cvn73100_ProbeCoupling_GND,
                                                      Cvn73100_ProbeCoupling_AC};
constexpr Cvn73100_ProbeAttenuation kAttenuations[] = {Cvn73100_ProbeAttenuation_X1, Cvn73100_ProbeAttenuation_X10,
                                                       Cvn73100_ProbeAttenuation_X20, Cvn73100_ProbeAttenuation_X100};
constexpr Cvn73100_TimeMode kTimeModes[] = {Cvn73100_TimeMode_Delayed, Cvn73100_TimeMode_XY, Cvn73100_TimeMode_Roll,
                                            Cvn73100_TimeMode_Normal};
constexpr Cvn73100_TimeReference kReferences[] = {Cvn73100_TimeReference_Center, Cvn73100_TimeReference_Right,
                                                  Cvn73100_TimeReference_Left};
constexpr Cvn73100_TriggerMode kTriggerModes[] = {Cvn73100_TriggerMode_Auto, Cvn73100_TriggerMode_Normal,
                                                  Cvn73100_TriggerMode_AutoLevel};
constexpr Cvn73100_TriggerSlope kSlopes[] = {Cvn73100_TriggerSlope_Positive, Cvn73100_TriggerSlope_Negative};
constexpr Cvn73100_TriggerCoupling kTriggerCouplings[] = {Cvn73100_TriggerCoupling_DC, Cvn73100_TriggerCoupling_AC};

// Trigger sources: channels 1..4, external, line, and logic bits D0..D15 as 10..25.
bool IsTriggerSource(std::int32_t value) { return (value >= 1 && value <= 6) || (value >= 10 && value <= 25); }

class Acquisition final : public IAcquisition {
 public:
  explicit Acquisition(ScpiChannel& channel) : m(channel) {}
  Cvn73100_AcquisitionType Type() override {
    return Reply<Cvn73100_AcquisitionType>(m.QueryInteger(":ACQuire:TYPE?"), kAcquisitionTypes, "acquisition type");
  }
  void SetType(Cvn73100_AcquisitionType type) override {
    m.Write(":ACQuire:TYPE " + Argument<Cvn73100_AcquisitionType>(type, kAcquisitionTypes, "acquisition type"));
  }
  Cvn73100_AcquisitionCount Count() override {
    return Reply<Cvn73100_AcquisitionCount>(m.QueryInteger(":ACQuire:COUNt?"), kAcquisitionCounts, "acquisition count");
  }
  void SetCount(Cvn73100_AcquisitionCount count) override {
    m.Write(":ACQuire:COUNt " + Argument<Cvn73100_AcquisitionCount>(count, kAcquisitionCounts, "acquisition count"));
  }

 private:
  ScpiChannel& m;
};

class AnalogChannels final : public IAnalogChannels {
 public:
  explicit AnalogChannels(ScpiChannel& channel) : m(channel) {}
  Cvn73100_OnOffState Display(Cvn73100_AnalogChannels channel) override {
    return Reply<Cvn73100_OnOffState>(m.QueryInteger(ChannelNode(channel) + ":DISPlay?"), kOnOff, "display state");
  }
  void SetDisplay(Cvn73100_AnalogChannels channel, Cvn73100_OnOffState state) override {
    m.Write(ChannelNode(channel) + ":DISPlay " + Argument<Cvn73100_OnOffState>(state, kOnOff, "display state"));
  }
  Cvn73100_ProbeCoupling Coupling(Cvn73100_AnalogChannels channel) override {
    return Reply<Cvn73100_ProbeCoupling>(m.QueryInteger(ChannelNode(channel) + ":COUPling?"), kProbeCouplings,
                                         "coupling");
  }
  void SetCoupling(Cvn73100_AnalogChannels channel, Cvn73100_ProbeCoupling coupling) override {
    m.Write(ChannelNode(channel) + ":COUPling " +
            Argument<Cvn73100_ProbeCoupling>(coupling, kProbeCouplings, "coupling"));
  }
  Cvn73100_ProbeAttenuation ProbeAttenuation(Cvn73100_AnalogChannels channel) override {
    return Reply<Cvn73100_ProbeAttenuation>(m.QueryInteger(ChannelNode(channel) + ":PROBe?"), kAttenuations,
                                            "probe attenuation");
  }
  void SetProbeAttenuation(Cvn73100_AnalogChannels channel, Cvn73100_ProbeAttenuation attenuation) override {
    m.Write(ChannelNode(channel) + ":PROBe " +
            Argument<Cvn73100_ProbeAttenuation>(attenuation, kAttenuations, "probe attenuation"));
  }
  double Range(Cvn73100_AnalogChannels channel) override { return m.QueryReal(ChannelNode(channel) + ":RANGe?"); }
  void SetRange(Cvn73100_AnalogChannels channel, double volts) override {
    m.Write(ChannelNode(channel) + ":RANGe " + Real(volts));
  }
  double Offset(Cvn73100_AnalogChannels channel) override { return m.QueryReal(ChannelNode(channel) + ":OFFSet?"); }
  void SetOffset(Cvn73100_AnalogChannels channel, double volts) override {
    m.Write(ChannelNode(channel) + ":OFFSet " + Real(volts));
  }

 private:
  ScpiChannel& m;
};

class LogicChannel final : public ILogicChannel {
 public:
  explicit LogicChannel(ScpiChannel& channel) : m(channel) {}
  Cvn73100_OnOffState Display(Cvn73100_LogicBits bit) override {
    return Reply<Cvn73100_OnOffState>(m.QueryInteger(DigitalNode(bit) + ":DISPlay?"), kOnOff, "display state");
  }
  void SetDisplay(Cvn73100_LogicBits bit, Cvn73100_OnOffState state) override {
    m.Write(DigitalNode(bit) + ":DISPlay " + Argument<Cvn73100_OnOffState>(state, kOnOff, "display state"));
  }

 private:
  ScpiChannel& m;
};

// Measurements of the record on screen; an instrument that cannot make one answers 9.9E37.
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
    return Reply<Cvn73100_TimeMode>(m.QueryInteger(":TIMebase:MODE?"), kTimeModes, "time mode");
  }
  void SetMode(Cvn73100_TimeMode mode) override {
    m.Write(":TIMebase:MODE " + Argument<Cvn73100_TimeMode>(mode, kTimeModes, "time mode"));
  }
  double Range() override { return m.QueryReal(":TIMebase:RANGe?"); }
  void SetRange(double seconds) override { m.Write(":TIMebase:RANGe " + Real(seconds)); }
  double Delay() override { return m.QueryReal(":TIMebase:DELay?"); }
  void SetDelay(double seconds) override { m.Write(":TIMebase:DELay " + Real(seconds)); }
  Cvn73100_TimeReference Reference() override {
    return Reply<Cvn73100_TimeReference>(m.QueryInteger(":TIMebase:REFerence?"), kReferences, "time reference");
  }
  void SetReference(Cvn73100_TimeReference reference) override {
    m.Write(":TIMebase:REFerence " + Argument<Cvn73100_TimeReference>(reference, kReferences, "time reference"));
  }

 private:
  ScpiChannel& m;
};

class Trigger final : public ITrigger {
 public:
  explicit Trigger(ScpiChannel& channel) : m(channel) {}
  Cvn73100_TriggerMode Mode() override {
    return Reply<Cvn73100_TriggerMode>(m.QueryInteger(":TRIGger:MODE?"), kTriggerModes, "trigger mode");
  }
  void SetMode(Cvn73100_TriggerMode mode) override {
    m.Write(":TRIGger:MODE " + Argument<Cvn73100_TriggerMode>(mode, kTriggerModes, "trigger mode"));
  }
  Cvn73100_TriggerSource Source() override {
    const std::int32_t value = m.QueryInteger(":TRIGger:SOURce?");
    if (!IsTriggerSource(value)) throw ServerError(SERVERERR_BAD_REPLY, "the instrument's trigger source");
    return static_cast<Cvn73100_TriggerSource>(value);
  }
  void SetSource(Cvn73100_TriggerSource source) override {
    if (!IsTriggerSource(source)) throw ServerError(SERVERERR_BAD_ARGUMENT, "trigger source " + scpi::Integer(source));
    m.Write(":TRIGger:SOURce " + scpi::Integer(source));
  }
  Cvn73100_TriggerSlope Slope() override {
    return Reply<Cvn73100_TriggerSlope>(m.QueryInteger(":TRIGger:SLOPe?"), kSlopes, "trigger slope");
  }
  void SetSlope(Cvn73100_TriggerSlope slope) override {
    m.Write(":TRIGger:SLOPe " + Argument<Cvn73100_TriggerSlope>(slope, kSlopes, "trigger slope"));
  }
  double Level() override { return m.QueryReal(":TRIGger:LEVel?"); }
  void SetLevel(double volts) override { m.Write(":TRIGger:LEVel " + Real(volts)); }
  Cvn73100_TriggerCoupling Coupling() override {
    return Reply<Cvn73100_TriggerCoupling>(m.QueryInteger(":TRIGger:COUPling?"), kTriggerCouplings, "trigger coupling");
  }
  void SetCoupling(Cvn73100_TriggerCoupling coupling) override {
    m.Write(":TRIGger:COUPling " + Argument<Cvn73100_TriggerCoupling>(coupling, kTriggerCouplings, "trigger coupling"));
  }

 private:
  ScpiChannel& m;
};

// Analog channels A1..A4 are 1..4; logic bits D0..D15 are 10..25.
class Trace final : public ITrace {
 public:
  explicit Trace(ScpiChannel& channel) : m(channel) {}
  Cvn73100_OnOffState Display(Cvn73100_AllChannels channel) override {
    return Reply<Cvn73100_OnOffState>(m.QueryInteger(Node(channel) + ":DISPlay?"), kOnOff, "display state");
  }
  void SetDisplay(Cvn73100_AllChannels channel, Cvn73100_OnOffState state) override {
    m.Write(Node(channel) + ":DISPlay " + Argument<Cvn73100_OnOffState>(state, kOnOff, "display state"));
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
