#pragma once

// A PulseAudio daemon of the test's own: a private runtime folder, a null sink named
// "sylvora_test" (whose monitor can be recorded) and a native socket that only this test's
// processes are pointed at. It does not touch the user's sound server or settings. The daemon is
// started by private-pulse.sh beside this file, which the figure scripts in bench/ start too.

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <memory>

namespace sylvora::test {

class PulseServer {
public:
    static constexpr const char* SINK_NAME = "sylvora_test";

    // Uses `folder` (empty, private) for the runtime files, home and state of the daemon.
    explicit PulseServer(const QString& folder);
    ~PulseServer();
    PulseServer(const PulseServer&) = delete;
    PulseServer& operator=(const PulseServer&) = delete;

    // Starts the daemon and waits until it answers. False with `why` filled when no PulseAudio can
    // run here (no binary, or a daemon that exits instead of serving).
    // Again after stop() or kill(): the same socket, a new daemon.
    bool start(QString& why);
    void stop();
    // Ends the daemon at once (SIGKILL), as a crash or an impatient session manager would.
    void kill();
    // Holds the daemon still (SIGSTOP), as a server that hangs would, or lets it go on.
    void hold(bool held);

    // The environment that points a client (SDL, parec, pactl) at this server and its sink.
    QProcessEnvironment clientEnvironment() const;
    QString log() const;

private:
    bool answers() const;

    QString folder;
    QString socketPath;
    QProcessEnvironment environment;
    std::unique_ptr<QProcess> daemon;
};

}  // namespace sylvora::test
