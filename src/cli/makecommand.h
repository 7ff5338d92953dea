#pragma once

#include "cli/clioptions.h"

namespace sylvora::cli {

// `sylvora-cli make FOLDER [-o WORLD.sylvora] [--name NAME]`: makes a world package from a folder
// of sound files and says what went where and why. Exits 0 when the package was written, else 1.
int runMake(const CliOptions& options);

}  // namespace sylvora::cli
