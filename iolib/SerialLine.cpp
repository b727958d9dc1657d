#include "iolib/SerialLine.h"

#include <fcntl.h>
#include <unistd.h>

#include "iolib/LibSerialPortLine.h"
#include "iolib/PtyLine.h"

namespace cvn73100::io {

std::unique_ptr<SerialLine> SerialLine::OpenNode(const std::string& path) {
  if (PtyLine::IsPseudoTerminal(path)) return std::make_unique<PtyLine>(path);
  return std::make_unique<LibSerialPortLine>(path);
}

bool SerialLine::NodeIsOpenable(const std::string& path) {
  const int fd = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return false;
  const bool terminal = ::isatty(fd) == 1;
  ::close(fd);
  return terminal;
}

}  // namespace cvn73100::io
