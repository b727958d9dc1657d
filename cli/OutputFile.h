#pragma once
#include <string>

#include "cli/CliContext.h"

namespace cvn73100 {

// True for "-", which names standard input or output wherever a command reads or writes a file.
inline bool IsStandardStream(const std::string& path) { return path == "-"; }

// Makes sure the folder of `path` exists: with --parents it is created, otherwise a missing folder is an
// error that names it. "-" needs no folder.
void PrepareOutputFolder(const CliContext& context, const std::string& path, const std::string& what);

// Writes `bytes` to `path` as a whole (see WriteFileAtomically), or to standard output for "-".
void WriteOutput(CliContext& context, const std::string& path, const std::string& bytes, const std::string& what);

// A private folder for a command's files in the temporary folder, removed with everything in it when the
// object goes: where "-" becomes a file for the parts that read and write files by name.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  std::string PathOf(const std::string& name) const { return m_path + "/" + name; }
  // Copies standard input into the file `name` of the folder and returns its path.
  std::string FromStandardInput(const std::string& name) const;

 private:
  std::string m_path;
};

}  // namespace cvn73100
