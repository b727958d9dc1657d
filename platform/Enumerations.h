#pragma once
#include <cstdint>

// The twenty public enumerations of the control library. They live beside the platform interfaces
// because the automation server's sub-objects are typed by them and the server sees only platform/.
namespace cvn73100 {

enum Cvn73100_CountryCode : std::int32_t {
  Cvn73100_Language_English = 1,
  Cvn73100_Language_French = 33,
  Cvn73100_Language_Spanish = 34,
  Cvn73100_Language_Italian = 39,
  Cvn73100_Language_German = 49,
  Cvn73100_Language_Japanese = 81,
  Cvn73100_Language_Korean = 82,
  Cvn73100_Language_Traditional_Chinese = 886,
};

enum Cvn73100_ShowPropertyPage : std::int16_t {
  Cvn73100_ShowPropertyPage_Default = 0,
  Cvn73100_ShowPropertyPage_Setups = 1,
  Cvn73100_ShowPropertyPage_Search = 2,
  Cvn73100_ShowPropertyPage_SetIO = 3,
};

enum Cvn73100_AcquisitionCount : std::int32_t {
  Cvn73100_AcquisitionCount_1 = 1,
  Cvn73100_AcquisitionCount_4 = 4,
  Cvn73100_AcquisitionCount_8 = 8,
  Cvn73100_AcquisitionCount_16 = 16,
  Cvn73100_AcquisitionCount_32 = 32,
  Cvn73100_AcquisitionCount_64 = 64,
  Cvn73100_AcquisitionCount_128 = 128,
  Cvn73100_AcquisitionCount_256 = 256,
};

enum Cvn73100_AcquisitionType : std::int32_t {
  Cvn73100_AcquisitionType_Average = 1,
  Cvn73100_AcquisitionType_Peak = 2,
  Cvn73100_AcquisitionType_Glitch = 3,
  Cvn73100_AcquisitionType_Real = 4,
  Cvn73100_AcquisitionType_Auto = 5,
  Cvn73100_AcquisitionType_Normal = 6,
};

enum Cvn73100_AllChannels : std::int32_t {
  Cvn73100_Channel_A1 = 1,
  Cvn73100_Channel_A2 = 2,
  Cvn73100_Channel_A3 = 3,
  Cvn73100_Channel_A4 = 4,
  Cvn73100_Channel_D0 = 10,
  Cvn73100_Channel_D1 = 11,
  Cvn73100_Channel_D2 = 12,
  Cvn73100_Channel_D3 = 13,
  Cvn73100_Channel_D4 = 14,
  Cvn73100_Channel_D5 = 15,
  Cvn73100_Channel_D6 = 16,
  Cvn73100_Channel_D7 = 17,
  Cvn73100_Channel_D8 = 18,
  Cvn73100_Channel_D9 = 19,
  Cvn73100_Channel_D10 = 20,
  Cvn73100_Channel_D11 = 21,
  Cvn73100_Channel_D12 = 22,
  Cvn73100_Channel_D13 = 23,
  Cvn73100_Channel_D14 = 24,
  Cvn73100_Channel_D15 = 25,
};

enum Cvn73100_AnalogChannels : std::int32_t {
  Cvn73100_Channel_1 = 1,
  Cvn73100_Channel_2 = 2,
  Cvn73100_Channel_3 = 3,
  Cvn73100_Channel_4 = 4,
};

enum Cvn73100_ImageFormat : std::int32_t {
  Cvn73100_ImageFormat_BMP = 0,
  Cvn73100_ImageFormat_GIF = 3,
  Cvn73100_ImageFormat_WMF = 4,
  Cvn73100_ImageFormat_EMF = 5,
  Cvn73100_ImageFormat_TIF = 6,
  Cvn73100_ImageFormat_JPG = 7,
};

enum Cvn73100_LogicBits : std::int32_t {
  Cvn73100_Logic_D0 = 0,
  Cvn73100_Logic_D1 = 1,
  Cvn73100_Logic_D2 = 2,
  Cvn73100_Logic_D3 = 3,
  Cvn73100_Logic_D4 = 4,
  Cvn73100_Logic_D5 = 5,
  Cvn73100_Logic_D6 = 6,
  Cvn73100_Logic_D7 = 7,
  Cvn73100_Logic_D8 = 8,
  Cvn73100_Logic_D9 = 9,
  Cvn73100_Logic_D10 = 10,
  Cvn73100_Logic_D11 = 11,
  Cvn73100_Logic_D12 = 12,
  Cvn73100_Logic_D13 = 13,
  Cvn73100_Logic_D14 = 14,
  Cvn73100_Logic_D15 = 15,
};

enum Cvn73100_LogicPods : std::int32_t {
  Cvn73100_Logic_POD1 = 1,
  Cvn73100_Logic_POD2 = 2,
};

enum Cvn73100_OnOffState : std::int32_t {
  Cvn73100_Off = 0,
  Cvn73100_On = 1,
};

enum Cvn73100_ProbeAttenuation : std::int32_t {
  Cvn73100_ProbeAttenuation_X1 = 1,
  Cvn73100_ProbeAttenuation_X10 = 10,
  Cvn73100_ProbeAttenuation_X20 = 20,
  Cvn73100_ProbeAttenuation_X100 = 100,
};

enum Cvn73100_ProbeCoupling : std::int32_t {
  Cvn73100_ProbeCoupling_DC = 1,
  Cvn73100_ProbeCoupling_GND = 2,
  Cvn73100_ProbeCoupling_AC = 3,
};

enum Cvn73100_ProbeMode : std::int32_t {
  Cvn73100_ProbeMode_Manual = 1,
  Cvn73100_ProbeMode_Auto = 2,
};

enum Cvn73100_TimeMode : std::int32_t {
  Cvn73100_TimeMode_Delayed = 1,
  Cvn73100_TimeMode_XY = 2,
  Cvn73100_TimeMode_Roll = 3,
  Cvn73100_TimeMode_Normal = 4,
};

enum Cvn73100_TriggerMode : std::int32_t {
  Cvn73100_TriggerMode_Auto = 1,
  Cvn73100_TriggerMode_Normal = 2,
  Cvn73100_TriggerMode_AutoLevel = 3,
};

enum Cvn73100_TimeReference : std::int32_t {
  Cvn73100_TimeReference_Center = 1,
  Cvn73100_TimeReference_Right = 2,
  Cvn73100_TimeReference_Left = 3,
};

enum Cvn73100_TriggerCoupling : std::int32_t {
  Cvn73100_TriggerCoupling_DC = 1,
  Cvn73100_TriggerCoupling_AC = 2,
};

enum Cvn73100_TriggerSlope : std::int32_t {
  Cvn73100_TriggerSlope_Positive = 1,
  Cvn73100_TriggerSlope_Negative = 2,
};

enum Cvn73100_TriggerSource : std::int32_t {
  Cvn73100_TriggerSource_Channel1 = 1,
  Cvn73100_TriggerSource_Channel2 = 2,
  Cvn73100_TriggerSource_Channel3 = 3,
  Cvn73100_TriggerSource_Channel4 = 4,
  Cvn73100_TriggerSource_External = 5,
  Cvn73100_TriggerSource_Line = 6,
  Cvn73100_TriggerSource_Logic_D0 = 10,
  Cvn73100_TriggerSource_Logic_D1 = 11,
  Cvn73100_TriggerSource_Logic_D2 = 12,
  Cvn73100_TriggerSource_Logic_D3 = 13,
  Cvn73100_TriggerSource_Logic_D4 = 14,
  Cvn73100_TriggerSource_Logic_D5 = 15,
  Cvn73100_TriggerSource_Logic_D6 = 16,
  Cvn73100_TriggerSource_Logic_D7 = 17,
  Cvn73100_TriggerSource_Logic_D8 = 18,
  Cvn73100_TriggerSource_Logic_D9 = 19,
  Cvn73100_TriggerSource_Logic_D10 = 20,
  Cvn73100_TriggerSource_Logic_D11 = 21,
  Cvn73100_TriggerSource_Logic_D12 = 22,
  Cvn73100_TriggerSource_Logic_D13 = 23,
  Cvn73100_TriggerSource_Logic_D14 = 24,
  Cvn73100_TriggerSource_Logic_D15 = 25,
};

enum Cvn73100_WaveformPoints : std::int32_t {
  Cvn73100_DataPoints_ALL = 0,
  Cvn73100_DataPoints_100 = 100,
  Cvn73100_DataPoints_250 = 250,
  Cvn73100_DataPoints_500 = 500,
  Cvn73100_DataPoints_1000 = 1000,
  Cvn73100_DataPoints_2000 = 2000,
};

}  // namespace cvn73100
