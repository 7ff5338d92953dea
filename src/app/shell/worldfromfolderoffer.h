#pragma once

// A plain folder dropped on a window of the application: offer to make a world from the sounds in
// it (the rules of WorldFromFolder), save it beside the folder under a name that is free, and open
// it as a dropped package is opened, unsaved changes of the current world asked about first.
// Main thread only.

#include <QString>

namespace sylvora::app {

// Asks on the event loop's next turn, so the drop that brought the folder has ended by then.
void offerWorldFromFolder(const QString& folder);

}  // namespace sylvora::app
