#pragma once
#include <array>
#include <cctype>
#include <string_view>

namespace cvn73100 {

// The 73100 models this software supports, in the order they are compared. A model field matches
// an entry when it begins with it, exactly (case-sensitive): "73135D,QX40001234,A.02.10" is a 73135D.
inline constexpr std::array<std::string_view, 21> SUPPORTED_MODELS = {
    "73105B", "73107B", "73109B", "73111B", "73113B", "73117B", "73117C", "73123A", "73123C", "73151A", "73151D",
    "73125A", "73125D", "73127A", "73127D", "73129A", "73133D", "73135A", "73135D", "73137A", "73137D",
};

// Every model of the family begins with this text (compared without regard to case).
inline constexpr std::string_view MODEL_FAMILY_PREFIX = "731";

// How a model field relates to the supported list.
enum class ModelMatch { Supported = 0, UnsupportedModel = 1, NotFamily = 2 };

// Classifies the text that follows the first comma of an identification reply (it may still hold
// the serial-number and firmware fields).
inline ModelMatch ClassifyModel(std::string_view model) {
  if (model.size() < MODEL_FAMILY_PREFIX.size()) return ModelMatch::NotFamily;
  for (std::size_t i = 0; i < MODEL_FAMILY_PREFIX.size(); ++i) {
    if (std::toupper(static_cast<unsigned char>(model[i])) != MODEL_FAMILY_PREFIX[i]) return ModelMatch::NotFamily;
  }
  for (std::string_view entry : SUPPORTED_MODELS) {
    if (model.substr(0, entry.size()) == entry) return ModelMatch::Supported;
  }
  return ModelMatch::UnsupportedModel;
}

// True when an identification reply ("maker,model,serial,firmware") names a supported model.
inline bool NamesSupportedModel(std::string_view reply) {
  const std::size_t comma = reply.find(',');
  return comma != std::string_view::npos && ClassifyModel(reply.substr(comma + 1)) == ModelMatch::Supported;
}

}  // namespace cvn73100
