#include "app/desktop/singleinstance.h"

#include <unistd.h>

#include <QCryptographicHash>
#include <QDataStream>
#include <QLocalSocket>

namespace sylvora::app {

namespace {
constexpr int CONNECT_TIMEOUT_MS = 1000;
constexpr int TRANSFER_TIMEOUT_MS = 3000;
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
    if (!socket.waitForConnected(CONNECT_TIMEOUT_MS)) return false;
    QByteArray message;
    QDataStream encoder(&message, QIODevice::WriteOnly);
    encoder << documents;
    QDataStream out(&socket);
    out << message;
    socket.flush();
    // The running instance answers once it has the whole message, so nothing is lost on exit.
    return socket.waitForReadyRead(TRANSFER_TIMEOUT_MS) && socket.read(1) == "1";
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
