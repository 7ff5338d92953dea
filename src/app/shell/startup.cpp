#include "app/shell/startup.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QSessionManager>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <memory>

#include "app/desktop/desktopbeep.h"
#include "app/desktop/mprisservice.h"
#include "app/desktop/quitsignals.h"
#include "app/desktop/singleinstance.h"
#include "app/desktop/sleeptimermenu.h"
#include "app/desktop/trayicon.h"
#include "app/editor/worldeditorwindow.h"
#include "app/info/aboutwindow.h"
#include "app/info/getinfowindow.h"
#include "app/mixer/mixerwindow.h"
#include "app/resources/appresources.h"
#include "app/shell/applicationevents.h"
#include "app/shell/bundledworlds.h"
#include "app/shell/unsavedworld.h"
#include "app/shell/commandline.h"
#include "app/shell/globals.h"
#include "app/shell/menus.h"
#include "app/shell/shellevents.h"
#include "app/shell/worldfromfolderoffer.h"
#include "app/windows/packagedrops.h"
#include "audio/engine/engine.h"
#include "audio/outputs/output.h"
#include "core/strings/stringresources.h"
#include "core/time/qteventloop.h"

namespace sylvora::app {

namespace {

constexpr int APPLICATION_ENGINE_RATE = 44100;

struct Runtime {
    QObject connections;  // the context of every connection start-up makes: gone at shut-down
    std::unique_ptr<audio::Engine> engine;
    std::unique_ptr<audio::AudioOutput> output;
    std::unique_ptr<QtEventLoop> eventLoop;
    std::unique_ptr<TrayIcon> tray;
    std::unique_ptr<SleepTimerMenu> sleepTimer;
    std::unique_ptr<MprisService> mpris;
    bool firstRun = false;
    bool background = false;
};
std::unique_ptr<Runtime> gRuntime;

// The world's windows carry its name and, the desktop's way, whether it has unsaved changes.
void refreshWindowTitles() {
    if (gCurrentWorld == nullptr || gWorldEditorWindow == nullptr) return;
    if (PlatformWindow* editor = gWorldEditorWindow->getWindow()) {
        const QString title = worldWindowTitle(gCurrentWorld->getName(), QObject::tr("World Editor"));
        if (editor->windowTitle() != title) editor->setWindowTitle(title);
    }
    const bool modified = gCurrentWorld->getModified();
    for (MyCarbonWindow* owner : {static_cast<MyCarbonWindow*>(gWorldEditorWindow), static_cast<MyCarbonWindow*>(gGetInfoWindow),
                                  static_cast<MyCarbonWindow*>(gMixerWindow)}) {
        if (owner != nullptr && owner->getWindow() != nullptr) owner->getWindow()->setWindowModified(modified);
    }
}

void watchWindows() {
    for (PlatformWindow* window : MyCarbonWindow::windowList()) {
        QObject::connect(window, &PlatformWindow::visibilityChanged, [] { ShellEvents::instance().notifyStateChanged(); });
        QObject::connect(window, &PlatformWindow::closedByUser, [] { windowClosedByUser(); });
    }
    QObject* context = &gRuntime->connections;
    QObject::connect(qApp, &QApplication::focusChanged, context, [] { enableMenuItemsEventHandler(); });
    QObject::connect(&ShellEvents::instance(), &ShellEvents::stateChanged, context, [] {
        enableMenuItemsEventHandler();
        refreshWindowTitles();
    });
}

void askBeforeLogout(QSessionManager& manager) {
    if (holdSessionEndForUnsavedChanges()) manager.cancel();
}

}  // namespace

QString preferencesFilePath() { return Preferences::defaultSettingsFilePath(); }

void startUp(const StartUpOptions& options) {
    initApplicationResources();
    gAskSaveChangesAction = ASK_SAVE_CHANGES_NONE;
    gNextOpenDocument.reset();
    navOpenDialog = nullptr;
    navPutDialog = nullptr;
    navAskSaveChangesDialog = nullptr;
    createMenus();
    installDesktopBeep();

    gRuntime = std::make_unique<Runtime>();
    // The engine runs at CD rate, the rate of most sound files, so their loops are decoded straight
    // into it and the sound server does the one conversion to the device, as it must anyway. The
    // world is not known yet here, and one engine serves every world opened later.
    gRuntime->engine = std::make_unique<audio::Engine>(APPLICATION_ENGINE_RATE);
    gRuntime->eventLoop = std::make_unique<QtEventLoop>();
    gRuntime->output = options.audioDevice ? audio::openDefaultOutput(*gRuntime->engine)
                                           : audio::makeNullOutput(*gRuntime->engine);
    // Told on the output's own thread; the windows and the tray hear of it on the main one.
    gRuntime->output->setServerListener([] { ShellEvents::instance().notifyStateChangedSoon(); });
    gRuntime->output->start();

    gPrefs = new Preferences();
    gCurrentWorld = new World(*gRuntime->engine, *gRuntime->eventLoop);
    // The strip and the tray name a broken loop sound; the windows' titles mark unsaved changes
    // however the world was edited.
    gCurrentWorld->setUnreadableLoopSoundsListener([] { ShellEvents::instance().notifyStateChangedSoon(); });
    gCurrentWorld->setChangeListener([] { ShellEvents::instance().notifyStateChangedSoon(); });
    // Before the windows: the Get Info window's strip offers the timer's menu.
    gRuntime->sleepTimer = std::make_unique<SleepTimerMenu>(*gCurrentWorld);
    gWorldEditorWindow = new WorldEditorWindow();
    gGetInfoWindow = new GetInfoWindow();
    gAboutWindow = new AboutWindow();
    gMixerWindow = new MixerWindow();
    watchWindows();
    setFolderDropHandler([](const QStringList& folders) {
        // World packages open as documents; a drop of plain folders only is an offer to make one.
        if (std::any_of(folders.cbegin(), folders.cend(), isWorldPackagePath)) doOpenDocsEvent(folders);
        else if (!folders.isEmpty()) offerWorldFromFolder(folders.front());
    });
    QObject::connect(qApp, &QGuiApplication::commitDataRequest, &gRuntime->connections, askBeforeLogout);
    if (options.tray) {
        gRuntime->tray = std::make_unique<TrayIcon>();
        setTrayAvailable(gRuntime->tray->isShown());
    } else {
        setTrayAvailable(false);
    }
    gRuntime->mpris = std::make_unique<MprisService>();

    gRuntime->background = options.background;
    gRuntime->firstRun = !QFileInfo::exists(preferencesFilePath());
    gPrefs->loadPreferences();
    gCurrentWorld->setVolume(gPrefs->getMasterVolume());
    ShellEvents::instance().notifyStateChanged();
}

bool isFirstRun() { return gRuntime && gRuntime->firstRun; }

void openFirstWorld(const QStringList& documents) {
    const bool quiet = gRuntime->background && isTrayAvailable();
    // The autostart asks nothing: the edits wait for a launch by the person.
    if (!quiet && offerUnsavedWorld()) {
        gWorldEditorWindow->startEditing();
        if (!documents.isEmpty()) doOpenDocsEvent(documents);  // which asks about the restored edits first
        return;
    }
    if (!documents.isEmpty()) {
        doOpenDocsEvent(documents);
    } else if (const QString bundled = bundledFirstWorld(); isFirstRun() && !quiet && !bundled.isEmpty()) {
        // Something to hear from the first moment: the example world, new to this person, so its
        // Get Info window comes up with it.
        doOpenDocsEvent({bundled});
    } else if (quiet) {
        // The session's autostart: the last world plays from the tray, and nothing asks anything.
        FSRef package;
        const Alias* last = gPrefs->getLastWorldAlias();
        if (last != nullptr && FSResolveAlias(*last, package) == noErr && loadWorldFromPackage(package) == noErr) {
            gCurrentWorld->start();
        }
        ShellEvents::instance().notifyStateChanged();
    } else {
        doOpenAppEvent();
    }
    if (quiet) return;
    if (!navOpenDialog.isNull()) {
        // The Open dialog is the window for now; cancelled, it leaves one behind.
        QObject::connect(navOpenDialog.data(), &QDialog::finished, &gRuntime->connections,
                         [] { QTimer::singleShot(0, &gRuntime->connections, showLaunchWindow); });
        return;
    }
    showLaunchWindow();
}

void openHandedDocuments(const QStringList& documents) {
    if (documents.isEmpty()) {
        dispatchCommand(command::SHOW);  // a second launch reopens, as a click would
        return;
    }
    doOpenDocsEvent(documents);
    showLaunchWindow();
}

void showLaunchWindow() {
    if (!navOpenDialog.isNull() || !navAskSaveChangesDialog.isNull()) return;
    for (PlatformWindow* window : MyCarbonWindow::windowList()) {
        if (window->isVisible()) return;
    }
    if (gCurrentWorld->getPackageAlias() == nullptr && !worldHasSounds()) gWorldEditorWindow->startEditing();
    else gGetInfoWindow->show();
}

void shutDown(bool endedFromOutside) {
    keepUnsavedWorld(endedFromOutside);
    gRuntime->mpris.reset();
    gRuntime->sleepTimer.reset();  // a fade in progress gives the master volume back first
    gPrefs->setLastWorldAlias(gCurrentWorld->getPackageAlias());
    gPrefs->setMasterVolume(gCurrentWorld->getVolume());
    gPrefs->savePreferences();

    setFolderDropHandler({});
    gRuntime->tray.reset();
    delete gMixerWindow;
    gMixerWindow = nullptr;
    delete gAboutWindow;
    gAboutWindow = nullptr;
    delete gGetInfoWindow;
    gGetInfoWindow = nullptr;
    delete gWorldEditorWindow;
    gWorldEditorWindow = nullptr;
    delete gCurrentWorld;
    gCurrentWorld = nullptr;
    delete gPrefs;
    gPrefs = nullptr;
    gNextOpenDocument.reset();

    gRuntime->output->stop();  // nothing pulls the engine once it goes
    gRuntime.reset();
    removeDesktopBeep();
    destroyMenus();
}

audio::Engine& applicationEngine() { return *gRuntime->engine; }
bool soundServerMissing() { return gRuntime && gRuntime->output && gRuntime->output->waitingForServer(); }
TrayIcon* applicationTray() { return gRuntime && gRuntime->tray && gRuntime->tray->isShown() ? gRuntime->tray.get() : nullptr; }

namespace {

// Prints the help or the version, or an unknown option with the usage; the exit status, or -1 to run.
int answerWithoutStarting(const LaunchRequest& request) {
    switch (request.action) {
        case LaunchRequest::Action::Run: return -1;
        case LaunchRequest::Action::Help: std::fputs(qPrintable(usageText()), stdout); return 0;
        case LaunchRequest::Action::Version: std::fputs(qPrintable(versionText()), stdout); return 0;
        case LaunchRequest::Action::Usage:
            std::fprintf(stderr, "%s\n%s",
                         qPrintable(QCoreApplication::translate("sylvora", "sylvora: unknown option %1")
                                        .arg(request.unknownOption)),
                         qPrintable(usageText()));
            return 2;
    }
    return -1;
}

}  // namespace

int runApplication(int argc, char** argv) {
    {
        QStringList raw;
        for (int i = 1; i < argc; ++i) raw << QString::fromLocal8Bit(argv[i]);
        // Before QApplication, which needs a display: --help and --version work without one, and
        // speak the desktop's language through a core application of their own.
        const LaunchRequest early = parseCommandLine(raw, false);
        if (early.action != LaunchRequest::Action::Run) {
            QCoreApplication answering(argc, argv);
            installStringTables();
            return answerWithoutStarting(early);
        }
    }
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Sylvora"));
    QApplication::setApplicationName(QStringLiteral("Sylvora"));
    QApplication::setApplicationDisplayName(QStringLiteral("Sylvora"));
    QApplication::setApplicationVersion(QStringLiteral(SYLVORA_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("org.sylvora.Sylvora"));
    initApplicationResources();
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/sylvora.svg")));
    QApplication::setQuitOnLastWindowClosed(false);  // closing a window only hides it
    installStringTables();

    const LaunchRequest request = parseCommandLine(QApplication::arguments().mid(1), true);
    if (const int status = answerWithoutStarting(request); status >= 0) return status;
    QStringList documents;
    for (const QString& argument : request.documents) documents << QFileInfo(argument).absoluteFilePath();
    SingleInstance instance(SingleInstance::serverNameFor(preferencesFilePath()));
    // The session's autostart finds Sylvora already running: nothing to hand, nothing to show.
    if (request.background && documents.isEmpty() && instance.isRunning()) return 0;
    if (instance.handToRunningInstance(documents)) return 0;

    startUp(StartUpOptions{.background = request.background});
    instance.listen();
    QObject::connect(&instance, &SingleInstance::documentsReceived, openHandedDocuments);
    QuitSignals quitSignals;
    QTimer::singleShot(0, [documents] { openFirstWorld(documents); });
    QApplication::exec();
    shutDown(quitSignals.received());
    return 0;
}

}  // namespace sylvora::app
