#pragma once
#include "platform/PropertyBag.h"

namespace cvn73100 {

// The form `current` with the changes one command made, from `base` (the form it read) to `mine` (the
// form it would write), carried over: a property changed, added or removed in `mine` takes its value
// from `mine`, every other keeps the one in `current`. Setups are matched by name, so that setups others
// added, changed or removed meanwhile stay as they left them.
MemoryPropertyBag MergeForms(const MemoryPropertyBag& base, const MemoryPropertyBag& mine,
                             const MemoryPropertyBag& current);

}  // namespace cvn73100
