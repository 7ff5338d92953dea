#pragma once

#include "cli/clioptions.h"

namespace sylvora::cli {

// `sylvora-cli render WORLD -o FILE --duration TIME [--seed N] [--rate HZ]`: renders offline, as
// fast as the machine allows; one seed always gives the same file.
int runRender(const CliOptions& options);

}  // namespace sylvora::cli
