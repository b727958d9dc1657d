#pragma once

#include <string>

namespace cvn73100::sim {

// The four fields of the *IDN? reply.
struct Identity {
  std::string manufacturer = "Corvane Technologies", model = "73135D", serial = "QX40001234", firmware = "A.02.10";

  // The *IDN? reply: the fields joined by commas, with empty trailing fields left out, so that a lone
  // manufacturer gives a reply without any comma and four empty fields an empty reply.
  std::string Reply() const;
  // The B-series models send screen images as BMP only.
  bool OffersCompressedImages() const { return model.empty() || model.back() != 'B'; }
  bool operator==(const Identity&) const = default;
};

}  // namespace cvn73100::sim
