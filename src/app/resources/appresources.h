#pragma once

// The application's compiled-in resources: icons, the windows' pictures and the help book.

namespace sylvora::app {

// [main] Makes them available under ":/"; safe to call any number of times. The application is a
// static library, whose resources are linked in only when something names them.
void initApplicationResources();

}  // namespace sylvora::app
