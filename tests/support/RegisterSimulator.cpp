// Linked into every test program: "sim" in the board map leads to the simulated instruments, as in the programs
// that offer them.
#include "simulator/Backend.h"

namespace {

const bool g_registered = (cvn73100::sim::RegisterBackend(), true);

}  // namespace
