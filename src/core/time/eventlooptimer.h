#pragma once

// The records behind an EventLoopTimerRef and an EventLoopWatchRef. Each loop keeps its own timers
// and watches as subclasses of these types, so a reference means the same thing in every build
// whichever loops it links.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "core/time/eventloop.h"

namespace sylvora {

class EventLoopTimer {
public:
    virtual ~EventLoopTimer() = default;

protected:
    EventLoopTimer() = default;
};

class EventLoopWatch {
public:
    virtual ~EventLoopWatch() = default;

protected:
    EventLoopWatch() = default;
};

// The record among a loop's own that a reference names, or the end of `records`.
template <typename Record>
auto findRecord(std::vector<std::unique_ptr<Record>>& records, const void* ref) {
    return std::find_if(records.begin(), records.end(), [ref](const std::unique_ptr<Record>& r) { return r.get() == ref; });
}

// The number of the first point of a timer's grid (first + n × interval) at or after `time`. A
// point up to a microsecond early counts: a time worked out as a sum of the same seconds may
// round a hair past the point it names, and must not cost a whole interval.
inline std::int64_t gridPointAtOrAfter(double first, double interval, double time) {
    constexpr double SLACK = 1e-6;
    return static_cast<std::int64_t>(std::ceil((time - SLACK - first) / interval));
}

}  // namespace sylvora
