// `mibhost serve`: the agent on its UDP socket, over a simulated switch.
#pragma once

#include "tool/options.h"

namespace tool {

// The simulated switch that the options ask for.
sw::Options simulation(const Options& options);

// Serves until SIGINT or SIGTERM; the exit code. Throws UsageError and std::runtime_error for what cannot be started.
int serve(const Options& options);

}  // namespace tool
