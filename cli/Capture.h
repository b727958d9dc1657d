#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "platform/Enumerations.h"

namespace cvn73100 {

class Cvn73100Scope;

// One channel's record, in seconds and volts, as the control's GetWaveformData gives it.
struct WaveformCapture {
  std::int32_t channel = 1;
  std::vector<double> seconds;
  std::vector<double> volts;
};

// Reads `points` points (0: the whole record) of analog channel `channel` through the control.
WaveformCapture CaptureWaveform(Cvn73100Scope& control, std::int32_t channel, std::int32_t points);

// "time,volts" and one row per point, in seconds and volts.
std::string WaveformCsv(const WaveformCapture& capture);

// The image format named "bmp", "gif", "tif"/"tiff" or "jpg"/"jpeg" (any case, with or without a leading dot);
// false when the name is none of them.
bool ImageFormatOfName(const std::string& name, Cvn73100_ImageFormat& format);
// The file extension of a format: "bmp", "gif", "tif", "jpg".
std::string ImageExtension(Cvn73100_ImageFormat format);

}  // namespace cvn73100
