#pragma once

// Sylvora as a media player on the session bus (MPRIS), so the desktop's media keys, its player
// controls and playerctl drive it. The world is the track: Play and Pause start and stop it, Next
// and Previous walk the Known Worlds menu, Volume is the master volume. Whatever the application
// shows is recomputed from the globals whenever ShellEvents says the state may have changed, and
// only what differs from what was last announced goes out as PropertiesChanged.
//
// Lifecycle: constructed after the globals exist (start-up); without a session bus it registers
// nothing and stays silent -> D-Bus calls arrive on the main thread's event loop -> destroyed at
// shut-down before the windows, which takes the name off the bus. Main thread only.

#include <QObject>
#include <QString>
#include <QVariantMap>

namespace sylvora::app {

class MprisService : public QObject {
    Q_OBJECT
public:
    static constexpr const char* SERVICE_NAME = "org.mpris.MediaPlayer2.sylvora";
    static constexpr const char* OBJECT_PATH = "/org/mpris/MediaPlayer2";
    static constexpr const char* PLAYER_INTERFACE = "org.mpris.MediaPlayer2.Player";
    static constexpr const char* NO_TRACK = "/org/mpris/MediaPlayer2/TrackList/NoTrack";

    MprisService();
    ~MprisService() override;
    bool isRegistered() const { return registered_; }
    QString serviceName() const { return serviceName_; }

    // What the Player interface reports, from the globals.
    QString playbackStatus() const;
    QVariantMap metadata() const;
    double volume() const;
    bool canPlay() const;
    bool canGoNext() const;

    // What the interfaces ask for.
    void play();
    void pause();
    void playPause();
    void stop();
    void next() { stepKnownWorld(1); }
    void previous() { stepKnownWorld(-1); }
    void setVolume(double volume);
    void openUri(const QString& uri);
    void raise();
    void quit();

private:
    void stepKnownWorld(int step);
    void announceChanges();

    bool registered_ = false;
    QString serviceName_;
    bool stoppedByStop_ = false;  // Stop (not Pause) was the last word: "Stopped" rather than "Paused"
    QVariantMap announced_;
};

}  // namespace sylvora::app
