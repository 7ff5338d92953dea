#include "app/support/appfixture.h"

#include <QApplication>
#include <QDir>
#include <QAbstractButton>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QSettings>
#include <QTimer>
#include <deque>
#include <vector>

#include "app/shell/startup.h"
#include "core/prefs/preferences.h"
#include "support/worldfixture.h"

namespace sylvora::test {

namespace {

struct PendingAnswer {
    std::function<void(QWidget*)> answer;
    QElapsedTimer waited;
    int timeoutMs;
};

struct ModalAnswerer {
    std::deque<PendingAnswer> pending;
    std::vector<QPointer<QWidget>> answered;
    bool timedOut = false;
    int inFlight = 0;  // answers queued to the loop and not yet run
    QTimer poll;

    ModalAnswerer() {
        poll.setInterval(10);
        QObject::connect(&poll, &QTimer::timeout, [this] { step(); });
    }

    bool alreadyAnswered(QWidget* widget) const {
        for (const QPointer<QWidget>& seen : answered) {
            if (seen == widget) return true;
        }
        return false;
    }

    void step() {
        if (pending.empty()) {
            poll.stop();
            return;
        }
        QWidget* modal = QApplication::activeModalWidget();
        if (modal != nullptr && modal->isVisible() && !alreadyAnswered(modal)) {
            answered.emplace_back(modal);
            auto answer = std::move(pending.front().answer);
            pending.pop_front();
            if (!pending.empty()) pending.front().waited.start();
            // Called from the loop, not from this timer: an answer may block in a dialog's own
            // loop, and a timer does not fire again while its handler runs.
            ++inFlight;
            QMetaObject::invokeMethod(qApp, [this, answer = std::move(answer), target = QPointer<QWidget>(modal)] {
                if (!target.isNull()) answer(target);
                --inFlight;
            }, Qt::QueuedConnection);
        } else if (pending.front().waited.hasExpired(pending.front().timeoutMs)) {
            ADD_FAILURE() << "no modal dialog came up to be answered";
            timedOut = true;
            pending.clear();
        }
    }
};

ModalAnswerer& answerer() {
    static auto* instance = new ModalAnswerer();  // lives as long as the QApplication's timers do
    return *instance;
}

}  // namespace

bool processEventsUntil(const std::function<bool()>& done, int timeoutMs) {
    QElapsedTimer waited;
    waited.start();
    QTimer wake;  // so that waiting for events never outlasts the deadline
    wake.start(5);
    while (!done()) {
        if (waited.hasExpired(timeoutMs)) return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

void answerNextModal(std::function<void(QWidget*)> answer, int timeoutMs) {
    ModalAnswerer& a = answerer();
    a.pending.push_back({std::move(answer), QElapsedTimer(), timeoutMs});
    if (a.pending.size() == 1) a.pending.front().waited.start();
    a.poll.start();
}

bool waitForAnswers(int timeoutMs) {
    ModalAnswerer& a = answerer();
    const bool drained = processEventsUntil([&a] { return a.pending.empty() && a.inFlight == 0; }, timeoutMs);
    const bool ok = drained && !a.timedOut;
    a.pending.clear();
    a.timedOut = false;
    return ok;
}

void answerMessageBox(int standardButton, MessageSeen* seen) {
    answerNextModal([standardButton, seen](QWidget* modal) {
        auto* box = qobject_cast<QMessageBox*>(modal);
        ASSERT_NE(box, nullptr) << "a " << modal->metaObject()->className() << " came up, not a message box";
        if (seen != nullptr) *seen = {box->text(), box->informativeText(), box->detailedText()};
        QAbstractButton* button = box->button(static_cast<QMessageBox::StandardButton>(standardButton));
        ASSERT_NE(button, nullptr);
        button->click();
    });
}

void chooseInFileDialog(QWidget* modal, const QString& path) {
    auto* dialog = qobject_cast<QFileDialog*>(modal);
    ASSERT_NE(dialog, nullptr) << "a " << modal->metaObject()->className() << " came up, not a file dialog";
    const QFileInfo chosen(path);
    dialog->setDirectory(chosen.absolutePath());
    // Typed, as a person would: the dialog lists the folder in the background, so a name chosen
    // from the list might not be there yet.
    auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    ASSERT_NE(name, nullptr);
    name->setText(chosen.fileName());
    static_cast<QDialog*>(dialog)->accept();  // the world dialogs' own accept, as the button would
}

void answerFileDialog(const QString& path) {
    answerNextModal([path](QWidget* modal) { chooseInFileDialog(modal, path); });
}

void cancelNextDialog() {
    answerNextModal([](QWidget* modal) {
        if (auto* box = qobject_cast<QMessageBox*>(modal)) box->button(QMessageBox::Cancel)->click();
        else if (auto* dialog = qobject_cast<QDialog*>(modal)) dialog->reject();
    });
}

bool quitsWhile(const std::function<void()>& act, int timeoutMs) {
    // Only the application's own loop hears a quit, so the test runs one.
    QTimer timeout;
    timeout.setSingleShot(true);
    QObject::connect(&timeout, &QTimer::timeout, [] { QCoreApplication::exit(1); });
    timeout.start(timeoutMs);
    QTimer::singleShot(0, qApp, act);
    return QApplication::exec() == 0;
}

AppTest::AppTest() {
    // Qt remembers the settings folder on first use, so the folder is set both ways: for this
    // process and for anything the application starts.
    const QString config = dir.makeDir(QStringLiteral("config"));
    qputenv("XDG_CONFIG_HOME", config.toUtf8());
    qputenv("XDG_CACHE_HOME", dir.makeDir(QStringLiteral("cache")).toUtf8());
    qputenv("XDG_STATE_HOME", dir.makeDir(QStringLiteral("state")).toUtf8());
    qputenv("XDG_DATA_HOME", dir.makeDir(QStringLiteral("data")).toUtf8());  // the person's worlds folder
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, config);
    startApp();
}

AppTest::~AppTest() {
    for (int left = 5; left > 0 && QApplication::activeModalWidget() != nullptr; --left) {
        QApplication::activeModalWidget()->close();  // a dialog a failed test left up
    }
    shutDownApp();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void AppTest::startApp(bool background) {
    app::startUp(app::StartUpOptions{.audioDevice = false, .tray = false, .background = background});
    running_ = true;
}

void AppTest::shutDownApp(bool endedFromOutside) {
    if (!running_) return;
    running_ = false;
    app::shutDown(endedFromOutside);
}

QString AppTest::settingsFile() const { return dir.filePath(QStringLiteral("config/Sylvora/Sylvora.ini")); }

QString AppTest::makeWorldPackage(const QString& name, const QString& folder, double loopSeconds) {
    const QString parent = folder.isEmpty() ? dir.path() : folder;
    // Made as another program would: the running application's known worlds do not hear of it.
    Preferences* const running = gPrefs;
    gPrefs = nullptr;
    WorldFixture maker;
    maker.world.setName(name);
    EXPECT_NE(maker.addLoop(maker.writeSound(QStringLiteral("loop.wav"), loopSeconds)), 0u);
    const QString packageName = name + QStringLiteral(".sylvora");
    EXPECT_EQ(maker.world.doSaveAs(refOf(parent), packageName), 0);
    gPrefs = running;
    return QDir(parent).filePath(packageName);
}

}  // namespace sylvora::test
