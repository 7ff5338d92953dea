#pragma once

// The application's globals. The five objects are created at start-up in this order and destroyed
// in the reverse order at shut-down; in between they are never null and every handler uses them
// without a test. Main thread only.

#include <QFileDialog>
#include <QMessageBox>
#include <QPointer>

#include "core/files/alias.h"
#include "core/prefs/preferences.h"
#include "core/world/world.h"

class QMenu;

namespace sylvora::app {

class WorldEditorWindow;
class GetInfoWindow;
class AboutWindow;
class MixerWindow;

enum AskSaveChangesActions {
    ASK_SAVE_CHANGES_QUIT = 0,
    ASK_SAVE_CHANGES_OPEN_DOCUMENT = 1,
    ASK_SAVE_CHANGES_OPEN_PROMPT = 2,
    ASK_SAVE_CHANGES_NEW_WORLD = 3,
    ASK_SAVE_CHANGES_NONE = 4,
};

// gPrefs lives with the preferences (core/prefs/preferences.h).
extern World* gCurrentWorld;
extern WorldEditorWindow* gWorldEditorWindow;
extern GetInfoWindow* gGetInfoWindow;
extern AboutWindow* gAboutWindow;
extern MixerWindow* gMixerWindow;  // made after the five, gone before them

extern AskSaveChangesActions gAskSaveChangesAction;
extern AliasHandle gNextOpenDocument;  // only together with ASK_SAVE_CHANGES_OPEN_DOCUMENT

extern QMenu* dockMenu;
extern QMenu* dockVolumeSubMenu;

// The three dialogs while they are up, else null.
extern QPointer<QFileDialog> navOpenDialog;
extern QPointer<QFileDialog> navPutDialog;
extern QPointer<QMessageBox> navAskSaveChangesDialog;

}  // namespace sylvora::app
