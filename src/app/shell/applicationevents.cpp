#include "app/shell/applicationevents.h"

#include <QApplication>

#include "app/desktop/sleeptimermenu.h"
#include "app/editor/worldeditorwindow.h"
#include "app/info/aboutwindow.h"
#include "app/info/getinfowindow.h"
#include "app/mixer/mixerwindow.h"
#include "app/shell/alerts.h"
#include "app/shell/documentflow.h"
#include "app/shell/globals.h"
#include "app/shell/helpbook.h"
#include "app/shell/shellevents.h"
#include "core/world/packagecheck.h"
#include "app/windows/packagedrops.h"
#include "core/strings/stringresources.h"

namespace sylvora::app {

namespace {

constexpr double VOLUME_STEP = 0.14285714285714285;  // 1/7
bool gTrayAvailable = false;

void openKnownWorld(int index) {
    const Alias* alias = gPrefs->getIndKnownWorldAlias(index);
    if (alias == nullptr) return;
    if (gCurrentWorld->getModified()) {
        doAskSaveChanges(ASK_SAVE_CHANGES_OPEN_DOCUMENT, alias);
        return;
    }
    FSRef package;
    const QString name = gPrefs->getIndKnownWorldName(index);
    OSStatus status = FSResolveAlias(*alias, package);
    if (status == noErr) status = loadWorldFromPackage(package);
    if (status != noErr) {
        const QString path = package.path.isEmpty() ? alias->recordedPath() : package.path;
        gPrefs->removeFromKnownWorlds(index);
        showOpenErrorAlert(path, status, name);
        return;
    }
    if (gGetInfoWindow->isVisible()) gGetInfoWindow->updateDisplay();
    gCurrentWorld->start();
    if (gWorldEditorWindow->isVisible()) gWorldEditorWindow->startEditing();
}

void newWorld() {
    if (gCurrentWorld->getModified()) {
        doAskSaveChanges(ASK_SAVE_CHANGES_NEW_WORLD, nullptr);
        return;
    }
    if (gGetInfoWindow->isVisible()) gGetInfoWindow->hide();
    gCurrentWorld->resetToInitialState();
    gWorldEditorWindow->startEditing();
}

void save() {
    const OSStatus status = gCurrentWorld->doSave();
    if (status == noErr) {
        if (gWorldEditorWindow->isVisible()) gWorldEditorWindow->startEditing();
        doPostAskSaveChangesAction();
    } else if (status == fnfErr) {
        doWorldSaveAsPrompt();
    } else {
        showSaveErrorAlert(status);
        showSomethingWhenInvisible();  // the action still waits, and the person needs a window to retry
    }
}

}  // namespace

OSStatus applicationEventHandler(const HICommand& command) {
    const CommandID id = command.commandID;
    const CommandID knownWorldIndex = id - Preferences::KNOWN_WORLD_COMMAND_BASE;
    if (knownWorldIndex <= static_cast<CommandID>(Preferences::MAX_KNOWN_WORLDS - 1)) {
        openKnownWorld(static_cast<int>(knownWorldIndex));
        return noErr;
    }
    const CommandID level = id - command::VOLUME_LEVEL_0;
    if (level <= 7) {
        gCurrentWorld->setVolume(static_cast<double>(level) / 7.0);
        return noErr;
    }
    switch (id) {
        case command::VOLUME_UP: gCurrentWorld->setVolume(masterVolume() + VOLUME_STEP); return noErr;
        case command::VOLUME_DOWN: gCurrentWorld->setVolume(masterVolume() - VOLUME_STEP); return noErr;
        case command::GET_INFO: gGetInfoWindow->show(); return noErr;
        case command::SHOW: gGetInfoWindow->show(); return noErr;
        case command::PLAY_PAUSE: doPlayPause(); return noErr;
        case command::MIXER: gMixerWindow->show(); return noErr;
        case command::ABOUT: gAboutWindow->show(); return noErr;
        case command::EDIT_WORLD: gWorldEditorWindow->startEditing(); return noErr;
        case command::APP_HELP: myGotoHelpPage(QString::fromLatin1(HELP_BOOK_START_PAGE), QString()); return noErr;
        case command::NEW: newWorld(); return noErr;
        case command::OPEN:
            if (gCurrentWorld->getModified()) doAskSaveChanges(ASK_SAVE_CHANGES_OPEN_PROMPT, nullptr);
            else doWorldOpenPrompt();
            return noErr;
        case command::SAVE: save(); return noErr;
        case command::SAVE_AS: doWorldSaveAsPrompt(); return noErr;
        case command::QUIT:
            if (!gCurrentWorld->getModified()) return eventNotHandledErr;
            doAskSaveChanges(ASK_SAVE_CHANGES_QUIT, nullptr);
            return noErr;
        default: return eventNotHandledErr;
    }
}

OSStatus loadWorldFromPackage(const FSRef& package) {
    if (const OSStatus status = checkWorldPackage(package); status != noErr) return status;
    return gCurrentWorld->loadFromPackage(package);
}

bool worldHasSounds() { return gCurrentWorld->getNumLoopSounds() > 0 || gCurrentWorld->getNumEnvironmentSounds() > 0; }

void doPlayPause() {
    if (gCurrentWorld->isPlaying()) gCurrentWorld->stop();
    else if (worldHasSounds()) gCurrentWorld->start();
}

void doAfterLoadSteps(bool wasKnownWorld) {
    if (!wasKnownWorld) gGetInfoWindow->show();
    else if (gGetInfoWindow->isVisible()) gGetInfoWindow->updateDisplay();
    if (gWorldEditorWindow->isVisible()) gWorldEditorWindow->startEditing();
    else gCurrentWorld->start();
    ShellEvents::instance().notifyStateChanged();
}

OSStatus doOpenAppEvent() {
    const Alias* last = gPrefs->getLastWorldAlias();
    if (last == nullptr) {
        doWorldOpenPrompt();
        return noErr;
    }
    FSRef package;
    if (FSResolveAlias(*last, package) == noErr) loadWorldFromPackage(package);
    if (gCurrentWorld->getPackageAlias() != nullptr) {
        gCurrentWorld->start();
        showSomethingWhenInvisible();
    } else {
        gWorldEditorWindow->startEditing();
    }
    ShellEvents::instance().notifyStateChanged();
    return noErr;
}

OSStatus doOpenDocsEvent(const QStringList& paths) {
    OSStatus status = noErr;
    for (const QString& path : paths) {
        FSRef item;
        AliasHandle alias;
        status = FSPathMakeRef(path, item);
        if (status == noErr) status = FSNewAlias(item, alias);
        if (status == noErr) status = FSResolveAlias(*alias, item);
        if (status != noErr) continue;
        if (!isWorldPackagePath(item.path)) continue;  // a plain file or folder is passed over
        if (gCurrentWorld->getModified()) {
            doAskSaveChanges(ASK_SAVE_CHANGES_OPEN_DOCUMENT, alias.get());
            break;
        }
        const bool wasKnown = gPrefs->isAKnownWorld(item);
        status = loadWorldFromPackage(item);
        if (status != noErr) showOpenErrorAlert(item.path, status);
        else doAfterLoadSteps(wasKnown);
        break;
    }
    ShellEvents::instance().notifyStateChanged();
    return status;
}

bool holdSessionEndForUnsavedChanges() {
    if (gCurrentWorld == nullptr || !gCurrentWorld->getModified()) return false;
    postCommand(command::QUIT);
    return true;
}

void setTrayAvailable(bool available) { gTrayAvailable = available; }
bool isTrayAvailable() { return gTrayAvailable; }

void showSomethingWhenInvisible() {
    // Not while a dialog is up: the flow is not over, and its end comes back here.
    if (gTrayAvailable) return;
    if (!navOpenDialog.isNull() || !navPutDialog.isNull() || !navAskSaveChangesDialog.isNull()) return;
    for (PlatformWindow* window : MyCarbonWindow::windowList()) {
        if (window->isVisible()) return;
    }
    gGetInfoWindow->show();
}

void windowClosedByUser() {
    if (gTrayAvailable) return;
    for (PlatformWindow* window : MyCarbonWindow::windowList()) {
        if (window->isVisible()) return;
    }
    postCommand(command::QUIT);
}

}  // namespace sylvora::app
