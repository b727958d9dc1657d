// Form files: the control's saved properties as JSON, read from a file anyone may have edited, then handed to
// the parts of the control that read their properties from it.
// Input: the file's text.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

#include "form/FormFile.h"
#include "fuzz/FuzzInput.h"
#include "ioconfig/CIOconfiguration.h"
#include "platform/ScopeError.h"
#include "setups/SetupsCvn73100Scope.h"

using namespace cvn73100;
using fuzz::Require;

namespace {

// A number of the file arrives as the same number, whether it becomes a Long or a Double.
bool SameNumbers(const nlohmann::json& value, const Variant& read) {
  if (value.is_array()) {
    if (read.GetType() != Variant::Type::Array || read.AsArray().size() != value.size()) return false;
    for (std::size_t i = 0; i < value.size(); ++i)
      if (!SameNumbers(value[i], read.AsArray()[i])) return false;
    return true;
  }
  if (!value.is_number_integer()) return true;
  const long double expected = value.is_number_unsigned() ? static_cast<long double>(value.get<std::uint64_t>())
                                                          : static_cast<long double>(value.get<std::int64_t>());
  if (read.GetType() == Variant::Type::Long) return static_cast<long double>(read.AsLong()) == expected;
  if (read.GetType() != Variant::Type::Double) return false;
  // A Double keeps the integer to within its 53-bit precision.
  return std::fabs(static_cast<long double>(read.AsDouble()) - expected) <= std::fabs(expected) * 0x1p-52L;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  MemoryPropertyBag bag;
  bag.Set("Address", "GPIB0::7::INSTR");
  const auto before = bag.Entries();
  try {
    FormFile::FromJson(text, bag);
  } catch (const ScopeError&) {
    Require(bag.Entries() == before, "a refused form changed the bag");
    return 0;
  }
  const nlohmann::json properties = nlohmann::json::parse(text)["properties"];
  for (const auto& [key, value] : bag.Entries())
    Require(SameNumbers(properties.at(key), value), "a number of the form read as another number");

  // What was read is written and read again unchanged, keys in the same order.
  MemoryPropertyBag again;
  FormFile::FromJson(FormFile::ToJson(bag), again);
  Require(again.Entries() == bag.Entries(), "a form does not survive being saved and read again");

  // The readers of the control's parts take whatever types the file holds.
  try {
    CIOconfiguration().ReadProperties(bag);
  } catch (const ScopeError&) {
  }
  try {
    SetupsCvn73100Scope::Create()->ReadProperties(bag);
  } catch (const ScopeError&) {
  }
  return 0;
}
