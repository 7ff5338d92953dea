#include "app/resources/appresources.h"

#include <QtGlobal>

// Q_INIT_RESOURCE names a function of the global namespace, so it cannot be called from inside ours.
static void registerApplicationResources() {
    Q_INIT_RESOURCE(resources);
    Q_INIT_RESOURCE(info);
    Q_INIT_RESOURCE(help);
}

namespace sylvora::app {

void initApplicationResources() {
    static const bool registered = (registerApplicationResources(), true);
    (void)registered;
}

}  // namespace sylvora::app
