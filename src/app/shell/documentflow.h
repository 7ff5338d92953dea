#pragma once

// Opening and saving worlds through dialogs, and the waiting action behind the ask-save-changes
// dialog: replacing the one world (open, new, known world, dropped world, quit) with unsaved
// changes first asks, remembers what was asked for, and performs it once the changes are saved or
// discarded. The dialogs are application-modal and opened without blocking; their finished()
// signals play the dialog callbacks' part. Main thread only.

#include "app/shell/globals.h"

namespace sylvora::app {

void doWorldOpenPrompt();
void doWorldSaveAsPrompt();
// `alias` is the world to open for ASK_SAVE_CHANGES_OPEN_DOCUMENT, else null; a copy is kept.
void doAskSaveChanges(AskSaveChangesActions action, const Alias* alias);
void doPostAskSaveChangesAction();

// The dialogs' user actions and their ending.
enum class NavUserAction { Cancel = 1, Open = 2, SaveAs = 3, SaveChanges = 6, DontSaveChanges = 7 };
enum class NavSelector { Terminate = 3, UserAction = 12 };
void navDialogEventCallback(NavSelector selector, NavUserAction action);
void navAskSaveChangesEventCallback(NavSelector selector, NavUserAction action);

}  // namespace sylvora::app
