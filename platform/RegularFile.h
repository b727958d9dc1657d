#pragma once
#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace cvn73100 {

// A file that cannot be read or written as a regular file; the text names the path and the reason.
class FileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Reads the regular file `path` whole; nullopt when there is none. A FIFO, device or folder is refused at
// once, never waited on, as is a file of more than `maxBytes`.
std::optional<std::string> ReadRegularFile(const std::string& path, std::size_t maxBytes);

// The file a write to `path` replaces: `path`, or the file its links lead to. A link that another user
// owns in a sticky world-writable folder (where the kernel would not follow it either) is refused, and
// so is anything but a regular file.
std::filesystem::path WriteTarget(const std::string& path);

// Replaces the file `path` names (see WriteTarget) by `bytes`, whole or not at all: a temporary file
// beside it, created exclusively, given the old file's mode (`newFileMode` for a new one), synced and
// renamed over it, then the folder synced. On failure the temporary is gone and the old file stands.
void WriteRegularFile(const std::string& path, std::string_view bytes, mode_t newFileMode = 0666);

// Removes the temporaries that writers of `target` left behind when they died mid-save.
void RemoveStaleTemporaries(const std::filesystem::path& target);

// Called with the name of each step of a save as it is reached ("created", "written", "synced",
// "renamed"); lets a test kill the process at any of them. nullptr removes it.
void SetWriteStepHook(void (*hook)(const char* step));

}  // namespace cvn73100
