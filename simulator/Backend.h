#pragma once

namespace cvn73100::sim {

// Makes "sim" in the I/O library's board map lead to this process's simulated instruments: the shared bus of
// SimulatedBus::Shared on a GPIB board, an instrument of the default configuration behind each COM port. Programs
// that offer the embedded simulated instrument call it once at start, before they make an I/O manager.
void RegisterBackend();

}  // namespace cvn73100::sim
