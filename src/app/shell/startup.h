#pragma once

// Start-up and shut-down of the desktop application, apart from main() so that tests can run the
// same steps inside their own QApplication.
//
// Lifecycle: a QApplication exists -> startUp() (menus, handlers, the five objects, preferences
// loaded, the master volume given to the world) -> the event loop runs; the first world is opened
// from inside it (openFirstWorld) -> shutDown() (the last world and the volume stored, preferences
// written, the objects destroyed in reverse order). Main thread only.

#include <QStringList>

namespace sylvora::audio {
class Engine;
}

namespace sylvora::app {

class TrayIcon;

struct StartUpOptions {
    bool audioDevice = true;  // false: the null output, which pulls at real-time pace unheard
    bool tray = true;         // false: no tray icon even where the desktop has a tray
    bool background = false;  // tray only: no window of its own accord where a tray shows the icon
};

void startUp(const StartUpOptions& options);
// The open event of a launch: the documents given, or without any, the last played world. The
// first launch ever (no settings file when start-up began) plays the bundled example world. A
// launch leaves a window on screen unless it is in the background with a tray to stand for it.
void openFirstWorld(const QStringList& documents);
// What a later launch handed over: its documents opened, or without any, the Get Info window.
void openHandedDocuments(const QStringList& documents);
// After a launch has opened what it was given: the Get Info window when no window of the
// application is up (the editor on an empty world that has nothing to show).
void showLaunchWindow();
bool isFirstRun();
// `endedFromOutside`: a signal ended the run, and the world's unsaved edits are kept for the next
// launch (unsavedworld.h).
void shutDown(bool endedFromOutside = false);

// What the application runs on, between startUp and shutDown.
audio::Engine& applicationEngine();
TrayIcon* applicationTray();  // null without a tray
// Whether the sound server went away (or was never there) and the output waits for it; the world
// plays on unheard meanwhile. A change of it is announced through ShellEvents::stateChanged.
bool soundServerMissing();

// The settings file the preferences use.
QString preferencesFilePath();

// main(): the whole run.
int runApplication(int argc, char** argv);

}  // namespace sylvora::app
