#pragma once

#include "platform/ScpiMnemonics.h"

namespace cvn73100::sim {

// Keyword matching is the host's and the instrument's one algorithm (see platform/ScpiMnemonics.h).
using scpi::MatchesKeyword;
using scpi::ShortForm;
using scpi::SplitSuffix;
using scpi::SuffixedWord;
inline constexpr int kHugeSuffix = scpi::HUGE_SUFFIX;

}  // namespace cvn73100::sim
