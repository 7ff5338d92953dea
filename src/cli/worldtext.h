#pragma once

// The text form of `sylvora-cli info`: what a person wants to read about a world package.

#include <QString>

#include "cli/worldsummary.h"

namespace sylvora::cli {

QString worldSummaryToText(const WorldSummary& summary);

}  // namespace sylvora::cli
