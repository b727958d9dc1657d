#include "cli/AtomicFile.h"

#include <filesystem>

#include "cli/CliContext.h"
#include "platform/AtomicFile.h"

namespace cvn73100 {
namespace {

constexpr std::int32_t FILE_ERROR = 75;  // Path/File access error

}  // namespace

void WriteFileAtomically(const std::string& path, const std::string& bytes, const std::string& what) {
  // The tool's own files (the form's folder) may not exist yet; the user's output folders are checked before.
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  std::error_code ec;
  if (!folder.empty()) std::filesystem::create_directories(folder, ec);
  try {
    ReplaceFileAtomically(path, {bytes});
  } catch (const AtomicFileError& error) {
    throw ScopeError(FILE_ERROR, CLI_SOURCE, what + " " + error.what());
  }
}

}  // namespace cvn73100
