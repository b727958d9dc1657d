#include "iolib/TcpSerialLine.h"

namespace cvn73100::io {

TcpSerialLine::TcpSerialLine(const std::string& host, int port)
    : m_stream(host, port, Deadline(std::chrono::milliseconds(3000))) {}

}  // namespace cvn73100::io
