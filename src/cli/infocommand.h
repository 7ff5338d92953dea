#pragma once

#include "cli/clioptions.h"

namespace sylvora::cli {

// `sylvora-cli info WORLD [--json]`: loads the package as the application does and describes it.
// Exits 0 when the load status is 0, else 1; the description is printed in both cases.
int runInfo(const CliOptions& options);

}  // namespace sylvora::cli
