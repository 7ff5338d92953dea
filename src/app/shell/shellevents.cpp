#include "app/shell/shellevents.h"

namespace sylvora::app {

ShellEvents& ShellEvents::instance() {
    static ShellEvents events;
    return events;
}

}  // namespace sylvora::app
