#pragma once
#include "platform/PropertyBag.h"

namespace cvn73100 {

// What one command changed in the form, applied to the form as another command left it meanwhile: the
// properties that `mine` changed from `base` take their new values in `current` (or leave it, when
// removed); the rest of `current` stays. Setups are merged by name, not by their numbered keys, so that
// two commands adding different setups keep both.
MemoryPropertyBag MergeFormChanges(const MemoryPropertyBag& base, const MemoryPropertyBag& mine,
                                   const MemoryPropertyBag& current);

}  // namespace cvn73100
