#pragma once

// The application's own handling of commands and of the two open events: launched with nothing to
// open (the last played world, else the Open dialog) and asked to open documents (the first world
// package of the list). Main thread only.

#include <QStringList>

#include "app/shell/commanddispatch.h"
#include "core/files/fsref.h"
#include "util/status.h"

namespace sylvora::app {

// noErr when handled, eventNotHandledErr to let the platform's default run.
OSStatus applicationEventHandler(const HICommand& command);

// Launched without documents.
OSStatus doOpenAppEvent();
// Asked to open `paths` (absolute): the first world package among them is opened.
OSStatus doOpenDocsEvent(const QStringList& paths);

// Loads the world from `package`, unless the package shows beforehand that it cannot be opened:
// then the current world stays as it was, playing on, and the status is what the load would give.
OSStatus loadWorldFromPackage(const FSRef& package);

// After a world was loaded from a file reference: show its Get Info window when it was not a known
// world before (else refresh a visible one), then edit it when the editor is visible, else play it.
void doAfterLoadSteps(bool wasKnownWorld);

// Play / Pause: a playing world stops (World::stop), a paused one starts (World::start). A world
// without sounds has nothing to play, and stays as it is.
void doPlayPause();
bool worldHasSounds();

// A person closed a window (close box or "clos"). Where no tray can show the application, closing
// the last visible window quits, so the application is never running unseen.
void windowClosedByUser();
// Where no tray is there, shows the Get Info window when no window of the application is visible.
void showSomethingWhenInvisible();
// The desktop session is ending (logout, shutdown): with unsaved changes the person is asked as
// when quitting, and true says the ending must be held for that.
bool holdSessionEndForUnsavedChanges();
void setTrayAvailable(bool available);
bool isTrayAvailable();

}  // namespace sylvora::app
