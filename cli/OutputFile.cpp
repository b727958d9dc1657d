#include "cli/OutputFile.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "cli/AtomicFile.h"
#include "cli/CliText.h"

namespace cvn73100 {
namespace {

constexpr std::int32_t FILE_ERROR = 75;  // Path/File access error

}  // namespace

void PrepareOutputFolder(const CliContext& context, const std::string& path, const std::string& what) {
  if (IsStandardStream(path)) return;
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  std::error_code ec;
  if (folder.empty() || std::filesystem::is_directory(folder, ec)) return;
  if (!context.parents) {
    throw ScopeError(FILE_ERROR, CLI_SOURCE, CliText(CliMsg::FOLDER_MISSING, {what, path, folder.string()}));
  }
  std::filesystem::create_directories(folder, ec);
  if (ec) throw ScopeError(FILE_ERROR, CLI_SOURCE, what + " " + path + ": " + folder.string() + ": " + ec.message());
}

void WriteOutput(CliContext& context, const std::string& path, const std::string& bytes, const std::string& what) {
  if (IsStandardStream(path)) {
    context.out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    context.out.flush();
    return;
  }
  PrepareOutputFolder(context, path, what);
  WriteFileAtomically(path, bytes, what);
}

ScratchFolder::ScratchFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "cvnscope.XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) {
    throw ScopeError(FILE_ERROR, CLI_SOURCE, CliText(CliMsg::TEMPORARY_FOLDER, {pattern, std::strerror(errno)}));
  }
  m_path = pattern;
}

ScratchFolder::~ScratchFolder() {
  std::error_code ec;
  std::filesystem::remove_all(m_path, ec);
}

std::string ScratchFolder::FromStandardInput(const std::string& name) const {
  const std::string path = PathOf(name);
  std::ofstream(path, std::ios::binary) << std::cin.rdbuf();
  return path;
}

}  // namespace cvn73100
