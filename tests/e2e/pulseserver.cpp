#include "pulseserver.h"

#include <signal.h>

#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace sylvora::test {

PulseServer::PulseServer(const QString& base) : folder(base) {
    const QDir dir(folder);
    socketPath = dir.filePath(QStringLiteral("run/native"));
    // The clients share the daemon's folders (private-pulse.sh), so that none of them writes to the user's.
    environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), dir.filePath(QStringLiteral("run")));
    environment.insert(QStringLiteral("PULSE_RUNTIME_PATH"), dir.filePath(QStringLiteral("run/pulse")));
    environment.insert(QStringLiteral("PULSE_STATE_PATH"), dir.filePath(QStringLiteral("state")));
    environment.insert(QStringLiteral("HOME"), dir.filePath(QStringLiteral("home")));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), dir.filePath(QStringLiteral("home/.config")));
    environment.remove(QStringLiteral("PULSE_SERVER"));
    environment.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
}

PulseServer::~PulseServer() {
    stop();
}

bool PulseServer::start(QString& why) {
    const QString binary = QStandardPaths::findExecutable(QStringLiteral("pulseaudio"));
    if (binary.isEmpty()) {
        why = QStringLiteral("the pulseaudio program is not installed");
        return false;
    }
    daemon = std::make_unique<QProcess>();
    daemon->setProcessChannelMode(QProcess::MergedChannels);
    daemon->start(QStringLiteral(SYLVORA_E2E_SCRIPTS "/private-pulse.sh"), {folder, QLatin1String(SINK_NAME)});
    if (!daemon->waitForStarted(-1)) {
        why = QStringLiteral("pulseaudio could not be started: %1").arg(daemon->errorString());
        return false;
    }
    // The daemon is ready once its socket answers; it either gets there or exits with a reason.
    while (!answers()) {
        if (daemon->state() != QProcess::Running || daemon->waitForFinished(100)) {
            why = QStringLiteral("pulseaudio exited before serving: %1").arg(log());
            return false;
        }
    }
    return true;
}

bool PulseServer::answers() const {
    if (!QFile::exists(socketPath)) return false;
    QProcess pactl;
    pactl.setProcessEnvironment(clientEnvironment());
    pactl.start(QStringLiteral("pactl"), {QStringLiteral("info")});
    return pactl.waitForFinished(-1) && pactl.exitStatus() == QProcess::NormalExit && pactl.exitCode() == 0;
}

void PulseServer::stop() {
    if (!daemon || daemon->state() == QProcess::NotRunning) return;
    daemon->terminate();
    if (!daemon->waitForFinished(10000)) {
        daemon->kill();
        daemon->waitForFinished(-1);
    }
}

void PulseServer::kill() {
    if (!daemon || daemon->state() == QProcess::NotRunning) return;
    daemon->kill();
    daemon->waitForFinished(-1);
}

void PulseServer::hold(bool held) {
    if (daemon && daemon->state() == QProcess::Running) ::kill(static_cast<pid_t>(daemon->processId()), held ? SIGSTOP : SIGCONT);
}

QProcessEnvironment PulseServer::clientEnvironment() const {
    QProcessEnvironment client = environment;
    client.insert(QStringLiteral("PULSE_SERVER"), QStringLiteral("unix:") + socketPath);
    client.insert(QStringLiteral("PULSE_SINK"), QLatin1String(SINK_NAME));
    client.insert(QStringLiteral("SDL_AUDIODRIVER"), QStringLiteral("pulseaudio"));
    return client;
}

QString PulseServer::log() const {
    return daemon ? QString::fromLocal8Bit(daemon->readAll()) : QString();
}

}  // namespace sylvora::test
