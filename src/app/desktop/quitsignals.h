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

    // Whether the run was ended by one of the signals rather than by a quit the person asked for.
    bool received() const { return received_; }

private:
    bool received_ = false;
    int fds_[2] = {-1, -1};
    std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace sylvora::app
