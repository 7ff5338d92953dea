#include "app/desktop/singleinstance.h"

#include <unistd.h>

#include <QCryptographicHash>
#include <QDataStream>
#include <QLocalSocket>

namespace sylvora::app {

namespace {
constexpr int WAIT_STEP_MS = 1000;
}  // namespace

QString SingleInstance::serverNameFor(const QString& settingsFilePath) {
    const QByteArray hash = QCryptographicHash::hash(settingsFilePath.toUtf8(), QCryptographicHash::Sha1).toHex();
    return QStringLiteral("sylvora-%1-%2").arg(getuid()).arg(QString::fromLatin1(hash.left(16)));
}

SingleInstance::SingleInstance(QString serverName) : serverName_(std::move(serverName)) {
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&server_, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = server_.nextPendingConnection()) {
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] { readConnection(socket); });
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        }
    });
}

bool SingleInstance::handToRunningInstance(const QStringList& documents) {
    QLocalSocket socket;
    socket.connectToServer(serverName_);
    // No socket, or one that refuses: nobody listens (a crashed instance left its socket). A
    // socket that accepts belongs to a live instance, however busy, and it is waited for: giving
    // up on it would start a second one, and both would write the same settings at quit.
    while (!socket.waitForConnected(WAIT_STEP_MS)) {
        if (socket.error() != QLocalSocket::SocketTimeoutError) return false;
    }
    QByteArray message;
    QDataStream encoder(&message, QIODevice::WriteOnly);
    encoder << documents;
    QDataStream out(&socket);
    out << message;
    socket.flush();
    // The running instance answers once it has the whole message, so nothing is lost on exit.
    while (socket.bytesAvailable() == 0 && socket.state() == QLocalSocket::ConnectedState) {
        socket.waitForReadyRead(WAIT_STEP_MS);
    }
    return socket.read(1) == "1";
}

bool SingleInstance::isRunning() {
    QLocalSocket socket;
    socket.connectToServer(serverName_);
    // As when handing over: a socket that accepts, however slowly, is a live instance.
    while (!socket.waitForConnected(WAIT_STEP_MS)) {
        if (socket.error() != QLocalSocket::SocketTimeoutError) return false;
    }
    return true;
}

bool SingleInstance::listen() {
    QLocalServer::removeServer(serverName_);  // only a crashed instance leaves one: the probe failed
    return server_.listen(serverName_);
}

void SingleInstance::readConnection(QLocalSocket* socket) {
    QDataStream stream(socket);
    stream.startTransaction();
    QByteArray message;
    stream >> message;
    if (!stream.commitTransaction()) return;  // wait for the rest
    QStringList documents;
    QDataStream decoder(message);
    decoder >> documents;
    socket->write("1");
    socket->flush();
    Q_EMIT documentsReceived(documents);
}

}  // namespace sylvora::app
