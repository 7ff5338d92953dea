#pragma once

// The JSON form of `sylvora-cli info --json`: one object with stable field names, for scripts.
// Fields the world has no value for are null, never missing.

#include <QJsonObject>

#include "cli/worldsummary.h"

namespace sylvora::cli {

QJsonObject worldSummaryToJson(const WorldSummary& summary);

}  // namespace sylvora::cli
