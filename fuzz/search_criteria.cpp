// The saved search criteria: the "SearchCriteria" image read back from a property bag, and the tables as a
// Variant structure (DataAsVariant), both as a host or a damaged form file may hand them over.
//
// Input: a mode byte, then either the raw image (even modes) or an encoded Variant (odd modes):
//   mode bit 0: a Variant instead of an image
//   mode bit 1: image: also store "DTROnly" (bit 2 its value); Variant: hand it to ReadProperties under the
//               key chosen by bits 2-3 instead of to SetDataAsVariant
//   mode bit 3: image: also store "ActiveAddressInstrumentID"
//   mode bit 4: start from an active serial port, whose handshake row then decides the address
// A Variant is a tag byte (mod 9: Empty, Boolean, Integer, Long, Double, String, byte array, double array,
// array) followed by its value; lengths and counts are one byte.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "fuzz/FuzzInput.h"
#include "ioconfig/CIOconfiguration.h"
#include "platform/PropertyBag.h"

namespace {

using cvn73100::Bytes;
using cvn73100::CIOconfiguration;
using cvn73100::MemoryPropertyBag;
using cvn73100::ScopeError;
using cvn73100::Variant;
using cvn73100::fuzz::FuzzInput;
using cvn73100::fuzz::Require;

constexpr int MAX_DEPTH = 5;

Variant Decode(FuzzInput& in, int depth) {
  if (in.Remaining() == 0) return Variant();
  switch (in.Byte() % 9) {
    case 0:
      return Variant();
    case 1:
      return Variant((in.Byte() & 1) != 0);
    case 2:
      return Variant(static_cast<std::int16_t>(in.Number(2)));
    case 3:
      return Variant(static_cast<std::int32_t>(in.Number(4)));
    case 4: {
      const std::uint64_t bits = in.Number(8);
      double value;
      std::memcpy(&value, &bits, sizeof value);
      return Variant(value);
    }
    case 5:
      return Variant(in.Text(in.Byte()));
    case 6: {
      const std::string text = in.Text(in.Byte());
      return Variant(Bytes(text.begin(), text.end()));
    }
    case 7: {
      Variant::Doubles values(in.Byte() % 16);
      for (double& value : values) {
        const std::uint64_t bits = in.Number(8);
        std::memcpy(&value, &bits, sizeof value);
      }
      return Variant(std::move(values));
    }
    default: {
      if (depth >= MAX_DEPTH) return Variant();
      const std::size_t count = in.Byte();
      Variant::Array items;
      // Every element costs at least one byte, so the structure stays as small as the input.
      for (std::size_t i = 0; i < count && in.Remaining() > 0; ++i) items.push_back(Decode(in, depth + 1));
      return Variant(std::move(items));
    }
  }
}

const char* const KEYS[] = {"SearchCriteria", "DTROnly", "ActiveAddressInstrumentID", "SearchCriteria"};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput in(data, size);
  const std::uint8_t mode = in.Byte();

  CIOconfiguration c;
  if (mode & 16) c.SetActiveAddressString("COM2::Baud=19200,Handshake=DTR_DSR");
  const CIOconfiguration before = c;
  const bool asTables = (mode & 3) == 1;
  try {
    if ((mode & 1) == 0) {
      const std::string image = in.Rest();
      MemoryPropertyBag bag;
      if (mode & 2) bag.Set("DTROnly", (mode & 4) != 0);
      if (mode & 8) bag.Set("ActiveAddressInstrumentID", "Corvane Technologies,73135D,0,A.01.02");
      bag.Set("SearchCriteria", Bytes(image.begin(), image.end()));
      c.ReadProperties(bag);
    } else if (asTables) {
      c.SetDataAsVariant(Decode(in, 0));
    } else {
      MemoryPropertyBag bag;
      bag.Set(KEYS[(mode >> 2) & 3], Decode(in, 0));
      c.ReadProperties(bag);
    }
  } catch (const ScopeError&) {
    Require(c == before, "a refused entry changed the configuration");
    return 0;
  }

  // Whatever was accepted is saved and read back unchanged.
  MemoryPropertyBag saved;
  c.WriteProperties(saved);
  CIOconfiguration reread = before;
  reread.ReadProperties(saved);
  Require(reread.DataAsVariant() == c.DataAsVariant(), "the saved image does not read back");
  Require(reread.ActiveAddressString() == c.ActiveAddressString() && reread.DTROnly() == c.DTROnly(),
          "the saved properties do not read back");
  // The image stores serial settings unchecked, so only tables that came in through DataAsVariant are sure
  // to pass its checks a second time.
  if (asTables) {
    CIOconfiguration copied = before;
    copied.SetDataAsVariant(c.DataAsVariant());
    Require(copied.DataAsVariant() == c.DataAsVariant(), "DataAsVariant does not read back");
  }
  return 0;
}
