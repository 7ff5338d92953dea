#pragma once

#include "cli/clioptions.h"

namespace sylvora::cli {

// `sylvora-cli play WORLD [--volume V] [--duration TIME]`: plays on the default device (or into
// the null output when there is none) until Ctrl+C or the duration, then fades out over a second.
int runPlay(const CliOptions& options);

}  // namespace sylvora::cli
