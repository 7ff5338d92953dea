#pragma once

// One Sylvora per user and settings file. A second launch hands its documents to the running one
// and exits before it reads any preference; the running one opens them, or shows itself when there
// are none. The name includes the user and the settings file, so a test with its own settings never
// meets the person's running Sylvora.

#include <QLocalServer>
#include <QObject>
#include <QStringList>

namespace sylvora::app {

class SingleInstance : public QObject {
    Q_OBJECT
public:
    // The settings file is the one the preferences use.
    static QString serverNameFor(const QString& settingsFilePath);

    explicit SingleInstance(QString serverName);

    // [main] True when a running instance took `documents` (absolute paths; may be empty).
    bool handToRunningInstance(const QStringList& documents);
    // [main] Whether another instance answers, without handing it anything.
    bool isRunning();
    // [main] Starts answering later launches; a socket left behind by a crash is removed first.
    bool listen();

Q_SIGNALS:
    // Documents handed over by a later launch; empty when it had none.
    void documentsReceived(const QStringList& documents);

private:
    void readConnection(class QLocalSocket* socket);

    QString serverName_;
    QLocalServer server_;
};

}  // namespace sylvora::app
