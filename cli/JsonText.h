#pragma once
#include <nlohmann/json.hpp>

namespace cvn73100 {

// Instrument replies are bytes, not text: JSON shows a sequence that is not UTF-8 as U+FFFD instead of failing.
inline constexpr auto kReplaceInvalidUtf8 = nlohmann::json::error_handler_t::replace;

}  // namespace cvn73100
