#include "app/info/inforesources.h"

#include <QtGlobal>

// The library is static, so its resources are linked in only when something names them.
static void registerInfoResources() { Q_INIT_RESOURCE(info); }

namespace sylvora::app {

void initInfoResources() {
    static const bool registered = (registerInfoResources(), true);
    (void)registered;
}

}  // namespace sylvora::app
