#pragma once

// The records behind an EventLoopTimerRef and an EventLoopWatchRef. Each loop keeps its own timers
// and watches as subclasses of these types, so a reference means the same thing in every build
// whichever loops it links.

#include <algorithm>
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

}  // namespace sylvora
