#pragma once
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>

namespace cvn73100 {

// A file that cannot be read as a regular file; the text names the path and the reason.
class FileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Reads the regular file `path` whole; nullopt when there is none. A FIFO, device or folder is refused at
// once, never waited on, as is a file of more than `maxBytes`.
std::optional<std::string> ReadRegularFile(const std::string& path, std::size_t maxBytes);

}  // namespace cvn73100
