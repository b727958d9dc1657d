#pragma once

#include <string>

namespace cvn73100::sim {

// The four fields of the *IDN? reply.
struct Identity {
  std::string manufacturer = "Corvane Technologies", model = "73135D", serial = "QX40001234", firmware = "A.02.10";

  // The *IDN? reply: the fields joined by commas, with empty trailing fields left out, so that a lone
  // manufacturer gives a reply without any comma and four empty fields an empty reply.
  std::string Reply() const;
  bool operator==(const Identity&) const = default;
};

}  // namespace cvn73100::sim
