#pragma once

// The base of every window of the application (the editor, Get Info and About). A window is made
// from its Qt Designer entry by name, knows its owner object, hides instead of closing, finds its
// controls by a two-part ID (a four-character signature and a number, set as the properties
// "signature" and "controlID" in the .ui file) and sees the commands sent while it is active
// before the application does.
//
// Lifecycle: constructed once at start-up -> show()/hide() any number of times -> destroyed at
// shut-down. Main thread only.

#include <QMainWindow>
#include <QString>
#include <vector>

#include "app/shell/commandids.h"
#include "util/status.h"

namespace sylvora::app {

class MyCarbonWindow;

// "Evening Forest — Mixer[*]", or "Mixer[*]" for a world with no name: the world first, as the
// desktop's document windows read, and "[*]" where setWindowModified marks unsaved changes.
QString worldWindowTitle(const QString& worldName, const QString& windowName);

// The Qt window behind a MyCarbonWindow. Its close box asks the owner to close (which hides), it
// opens world packages dropped on it, and it reports being shown or hidden so that the menus'
// enabled states follow.
class PlatformWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit PlatformWindow(MyCarbonWindow& owner);
    MyCarbonWindow& owner() const { return owner_; }

Q_SIGNALS:
    void visibilityChanged(bool visible);
    // The person closed the window (its close box); the window has already hidden.
    void closedByUser();

protected:
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    MyCarbonWindow& owner_;
};

class MyCarbonWindow {
public:
    // `name` is the window's entry: "WorldEditorWindow", "GetInfoWindow" or "AboutWindow". An
    // unknown entry leaves the object without a window.
    explicit MyCarbonWindow(const QString& name);
    virtual ~MyCarbonWindow();
    MyCarbonWindow(const MyCarbonWindow&) = delete;
    MyCarbonWindow& operator=(const MyCarbonWindow&) = delete;

    bool isVisible() const;
    QWidget* myGetControlByID(CommandID signature, int id) const;
    static int myGetControlID(const QWidget* control);
    PlatformWindow* getWindow() const { return window; }
    // The object that owns the window holding `widget` (its reference constant), or null.
    static MyCarbonWindow* fromWidget(const QWidget* widget);

    virtual bool copyAllowed() { return copyAllowedFlag; }
    virtual bool pasteAllowed() { return pasteAllowedFlag; }
    virtual bool cutClearAllowed() { return cutClearAllowedFlag; }
    virtual bool selectAllAllowed() { return selectAllAllowedFlag; }
    virtual bool undoAllowed() { return undoAllowedFlag; }
    virtual bool redoAllowed() { return redoAllowedFlag; }
    virtual void doCopy() {}
    virtual void doCut() {}
    virtual void doPaste() {}
    virtual void doClear() {}
    virtual void doSelectAll() {}
    virtual void doUndo() {}
    virtual void doRedo() {}
    virtual bool canDoOpen() { return canDoOpenFlag; }
    virtual bool canDoSave() { return canDoSaveFlag; }
    virtual bool canDoSaveAs() { return canDoSaveAsFlag; }
    virtual void doOpenPrompt() {}
    virtual void doSave() {}
    virtual void doSaveAsPrompt() {}
    virtual void show();
    virtual void hide();
    virtual void close() { hide(); }

    // A command sent while this window is active: noErr when the window acted on it, else
    // eventNotHandledErr so that the application gets it.
    virtual OSStatus handleCommand(CommandID command);
    // The text-changed notice of a field with the notifier, delivered through the event loop.
    virtual void handleTextChanged(QWidget* control);

    // The class-wide list of windows made by this class, in order of creation.
    static void addWindowToListOf_MyCarbonWindow(PlatformWindow* window);
    static void removeWindowFromListOf_MyCarbonWindows(PlatformWindow* window);
    static const std::vector<PlatformWindow*>& windowList() { return MyCarbonWindow_List; }

protected:
    PlatformWindow* window = nullptr;

private:
    bool copyAllowedFlag = false;
    bool pasteAllowedFlag = false;
    bool cutClearAllowedFlag = false;
    bool selectAllAllowedFlag = false;
    bool undoAllowedFlag = false;
    bool redoAllowedFlag = false;
    bool canDoOpenFlag = false;
    bool canDoSaveFlag = false;
    bool canDoSaveAsFlag = false;
    bool ownsWindow = true;

    static std::vector<PlatformWindow*> MyCarbonWindow_List;
};

}  // namespace sylvora::app
