#include "app/shell/startup.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QSessionManager>
#include <QTimer>
#include <algorithm>
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
#include "app/resources/appresources.h"
#include "app/shell/applicationevents.h"
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
};
std::unique_ptr<Runtime> gRuntime;

void watchWindows() {
    for (PlatformWindow* window : MyCarbonWindow::windowList()) {
        QObject::connect(window, &PlatformWindow::visibilityChanged, [] { ShellEvents::instance().notifyStateChanged(); });
        QObject::connect(window, &PlatformWindow::closedByUser, [] { windowClosedByUser(); });
    }
    QObject* context = &gRuntime->connections;
    QObject::connect(qApp, &QApplication::focusChanged, context, [] { enableMenuItemsEventHandler(); });
    QObject::connect(&ShellEvents::instance(), &ShellEvents::stateChanged, context,
                     [] { enableMenuItemsEventHandler(); });
}

void askBeforeLogout(QSessionManager& manager) {
    if (gCurrentWorld == nullptr || !gCurrentWorld->getModified()) return;
    // Unsaved changes stop the logout, and the person is asked as when quitting.
    manager.cancel();
    postCommand(command::QUIT);
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
    gRuntime->output->start();

    gPrefs = new Preferences();
    gCurrentWorld = new World(*gRuntime->engine, *gRuntime->eventLoop);
    gWorldEditorWindow = new WorldEditorWindow();
    gGetInfoWindow = new GetInfoWindow();
    gAboutWindow = new AboutWindow();
    watchWindows();
    setFolderDropHandler([](const QStringList& folders) {
        // World packages open as documents; a drop of plain folders only is an offer to make one.
        if (std::any_of(folders.cbegin(), folders.cend(), isWorldPackagePath)) doOpenDocsEvent(folders);
        else if (!folders.isEmpty()) offerWorldFromFolder(folders.front());
    });
    gRuntime->sleepTimer = std::make_unique<SleepTimerMenu>(*gCurrentWorld);
    QObject::connect(qApp, &QGuiApplication::commitDataRequest, &gRuntime->connections, askBeforeLogout);
    if (options.tray) {
        gRuntime->tray = std::make_unique<TrayIcon>();
        setTrayAvailable(gRuntime->tray->isShown());
    } else {
        setTrayAvailable(false);
    }
    gRuntime->mpris = std::make_unique<MprisService>();

    gPrefs->loadPreferences();
    gCurrentWorld->setVolume(gPrefs->getMasterVolume());
    ShellEvents::instance().notifyStateChanged();
}

void openFirstWorld(const QStringList& documents) {
    if (documents.isEmpty()) {
        doOpenAppEvent();
        return;
    }
    doOpenDocsEvent(documents);
    showSomethingWhenInvisible();
}

void shutDown() {
    gRuntime->mpris.reset();
    gRuntime->sleepTimer.reset();  // a fade in progress gives the master volume back first
    gPrefs->setLastWorldAlias(gCurrentWorld->getPackageAlias());
    gPrefs->setMasterVolume(gCurrentWorld->getVolume());
    gPrefs->savePreferences();

    setFolderDropHandler({});
    gRuntime->tray.reset();
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
TrayIcon* applicationTray() { return gRuntime && gRuntime->tray && gRuntime->tray->isShown() ? gRuntime->tray.get() : nullptr; }

int runApplication(int argc, char** argv) {
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

    QStringList documents;
    for (const QString& argument : QApplication::arguments().mid(1)) {
        documents << QFileInfo(argument).absoluteFilePath();
    }
    SingleInstance instance(SingleInstance::serverNameFor(preferencesFilePath()));
    if (instance.handToRunningInstance(documents)) return 0;

    startUp(StartUpOptions{});
    instance.listen();
    QObject::connect(&instance, &SingleInstance::documentsReceived, [](const QStringList& handed) {
        if (handed.isEmpty()) dispatchCommand(command::SHOW);  // a second launch reopens, as a click would
        else doOpenDocsEvent(handed);
    });
    QuitSignals quitSignals;
    QTimer::singleShot(0, [documents] { openFirstWorld(documents); });
    QApplication::exec();
    shutDown();
    return 0;
}

}  // namespace sylvora::app
