#pragma once

// Unsaved edits across an ending the person did not ask for: a session that logs out without
// waiting, a kill from a task manager or a terminal closed under the application. Main thread only.

namespace sylvora::app {

// At launch: when the last run was ended with unsaved edits, asks whether to restore them. True
// when the person chose to: the recovered world is then the current one, changed and playing.
bool offerUnsavedWorld();

// At shut-down, before the world goes: an ending from outside keeps the world's unsaved edits for
// the next launch; a quit the person asked for (whose questions were answered) forgets them.
void keepUnsavedWorld(bool endedFromOutside);

}  // namespace sylvora::app
