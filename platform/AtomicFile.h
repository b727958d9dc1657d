#pragma once
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>

namespace cvn73100 {

// Why a file could not be replaced: the step and the system's reason, with the path.
class AtomicFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Replaces the file at `path` by `parts`, written one after another, whole or not at all: the bytes go to
// a new file beside the target (created exclusively, with the existing file's mode), which is synced and
// renamed over it; then the folder is synced. A crash leaves the old file or the new one, each whole; the
// temporary file it leaves is removed by the next replacement of that file.
//
// A symbolic link of one's own keeps pointing where it did and its target is replaced. A link in a shared
// sticky folder (such as /tmp) that belongs to another user is never followed. What is there and is not a
// regular file (a folder, a FIFO, a device) is refused. Raises AtomicFileError.
void ReplaceFileAtomically(const std::string& path, std::initializer_list<std::string_view> parts);

}  // namespace cvn73100
