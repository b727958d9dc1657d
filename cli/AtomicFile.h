#pragma once
#include <string>

namespace cvn73100 {

// Writes `bytes` to `path` whole or not at all: a temporary file beside it, synced, then renamed over it.
// The folder is created when missing. Raises a ScopeError naming `what` and the path on failure, leaving an
// existing file as it was.
void WriteFileAtomically(const std::string& path, const std::string& bytes, const std::string& what);

}  // namespace cvn73100
