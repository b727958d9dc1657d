#pragma once

namespace cvn73100::io {

// Registers this I/O library with Components: each Components::CreateIOManager() then returns a new
// IOManager over the board map read at that moment (config file and environment). Host programs call it once
// at start; calling it again is harmless.
void RegisterIOLibrary();

}  // namespace cvn73100::io
