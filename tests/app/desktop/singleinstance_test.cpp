// A second launch meets the running instance: it waits for one that is busy, however long, and
// takes the place of one that crashed and left its socket behind.

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <chrono>
#include <cstring>
#include <future>
#include <thread>

#include "app/desktop/singleinstance.h"
#include "app/support/appfixture.h"

namespace sylvora::test {
namespace {

using namespace std::chrono_literals;

TEST(SingleInstanceTest, ABusyInstanceIsWaitedForAndACrashedOnesSocketIsTakenOver) {
    const QString name = app::SingleInstance::serverNameFor(
        QDir::temp().filePath(QStringLiteral("sylvora-single-%1").arg(QCoreApplication::applicationPid())));
    QString socketPath;
    {
        app::SingleInstance running(name);
        ASSERT_TRUE(running.listen());
        QStringList received;
        QObject::connect(&running, &app::SingleInstance::documentsReceived,
                         [&received](const QStringList& documents) { received = documents; });
        auto handed = std::async(std::launch::async, [name] {
            app::SingleInstance second(name);
            return second.handToRunningInstance({QStringLiteral("/worlds/Marsh.sylvora")});
        });
        std::this_thread::sleep_for(3500ms);  // the running one is busy, longer than any fixed patience
        ASSERT_TRUE(processEventsUntil([&handed] { return handed.wait_for(0s) == std::future_status::ready; }));
        EXPECT_TRUE(handed.get());
        EXPECT_EQ(received, QStringList{QStringLiteral("/worlds/Marsh.sylvora")});
        socketPath = QDir::temp().filePath(name);
    }

    // What a crash leaves: the socket's file, and nobody listening on it.
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_GE(fd, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray path = socketPath.toLocal8Bit();
    std::strncpy(address.sun_path, path.constData(), sizeof(address.sun_path) - 1);
    ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    ::close(fd);
    app::SingleInstance next(name);
    EXPECT_FALSE(next.handToRunningInstance({}));
    EXPECT_TRUE(next.listen());
}

}  // namespace
}  // namespace sylvora::test
