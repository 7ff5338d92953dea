#pragma once

// SIGTERM, SIGHUP and SIGINT end the event loop like a quit without questions, so that shut-down still
// stores the preferences. The handler only writes to a pipe; the loop reads it.

#include <QObject>
#include <QSocketNotifier>
#include <memory>

namespace sylvora::app {

class QuitSignals : public QObject {
    Q_OBJECT
public:
    QuitSignals();
    ~QuitSignals() override;

private:
    int fds_[2] = {-1, -1};
    std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace sylvora::app
