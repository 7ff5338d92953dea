#pragma once

// The desktop application inside a test: private settings, state and cache folders, the shell started
// without a sound device or tray and shut down afterwards, modal dialogs answered by the test, and
// world packages saved by the core as a person's would be.

#include <gtest/gtest.h>

#include <QString>
#include <functional>

#include "support/tempdir.h"

class QWidget;

namespace sylvora::test {

// Runs the event loop until `done` holds; false when `timeoutMs` passed first.
bool processEventsUntil(const std::function<bool()>& done, int timeoutMs = 5000);

// Calls `answer` with the next application-modal widget once it is up (a dialog opened with
// exec() or open()), from inside the event loop, so a blocking exec() can be answered. Returns at
// once; waitForAnswers() says whether every pending answer ran.
void answerNextModal(std::function<void(QWidget*)> answer, int timeoutMs = 5000);
bool waitForAnswers(int timeoutMs = 5000);

// Ready-made answers. What a message box showed, for the test to check.
struct MessageSeen {
    QString text, informativeText, detailedText;
};
void answerMessageBox(int standardButton, MessageSeen* seen = nullptr);
// Chooses `path` in the next file dialog (a package to open, or the folder and name to save as).
void answerFileDialog(const QString& path);
void chooseInFileDialog(QWidget* fileDialog, const QString& path);
void cancelNextDialog();

// Runs the event loop around `act` until the application is asked to quit; false after `timeoutMs`.
bool quitsWhile(const std::function<void()>& act, int timeoutMs = 3000);

class AppTest : public ::testing::Test {
protected:
    AppTest();
    ~AppTest() override;

    // Started in the constructor; a test may shut down itself to look at what was stored.
    void startApp(bool background = false);
    // `endedFromOutside`: as a signal ends the run, keeping unsaved edits for the next launch.
    void shutDownApp(bool endedFromOutside = false);
    QString settingsFile() const;  // $XDG_CONFIG_HOME/Sylvora/Sylvora.ini

    // A world package `name`.sylvora in `folder` (the temporary folder by default), written by
    // World::doSaveAs from a world named `name` with one short loop sound. Returns its path.
    QString makeWorldPackage(const QString& name, const QString& folder = {}, double loopSeconds = 0.5);

    TempDir dir;

private:
    bool running_ = false;
};

}  // namespace sylvora::test
