#pragma once

// The record behind an EventLoopTimerRef. Each loop keeps its own timers as subclasses of this one
// type, so a reference means the same thing in every build whichever loops it links.

#include "core/time/eventloop.h"

namespace sylvora {

class EventLoopTimer {
public:
    virtual ~EventLoopTimer() = default;

protected:
    EventLoopTimer() = default;
};

}  // namespace sylvora
