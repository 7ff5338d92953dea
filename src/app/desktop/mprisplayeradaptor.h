#pragma once

// org.mpris.MediaPlayer2.Player: play, pause, stop, next and previous world, volume and what plays.
// A world has no position: it plays without end, so seeking is refused and the position is 0.

#include <QDBusAbstractAdaptor>
#include <QDBusObjectPath>
#include <QVariantMap>

namespace sylvora::app {

class MprisService;

class MprisPlayerAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2.Player")
    Q_PROPERTY(QString PlaybackStatus READ playbackStatus)
    Q_PROPERTY(double Rate READ rate WRITE setRate)
    Q_PROPERTY(QVariantMap Metadata READ metadata)
    Q_PROPERTY(double Volume READ volume WRITE setVolume)
    Q_PROPERTY(qlonglong Position READ position)
    Q_PROPERTY(double MinimumRate READ rate)
    Q_PROPERTY(double MaximumRate READ rate)
    Q_PROPERTY(bool CanGoNext READ canGoNext)
    Q_PROPERTY(bool CanGoPrevious READ canGoNext)
    Q_PROPERTY(bool CanPlay READ canPlay)
    Q_PROPERTY(bool CanPause READ canPause)
    Q_PROPERTY(bool CanSeek READ canSeek)
    Q_PROPERTY(bool CanControl READ canControl)
public:
    explicit MprisPlayerAdaptor(MprisService& service);

    QString playbackStatus() const;
    double rate() const { return 1.0; }
    void setRate(double) {}  // one rate only
    QVariantMap metadata() const;
    double volume() const;
    void setVolume(double volume);
    qlonglong position() const { return 0; }
    bool canGoNext() const;
    bool canPlay() const;
    bool canPause() const { return true; }
    bool canSeek() const { return false; }
    bool canControl() const { return true; }

public Q_SLOTS:
    void Next();
    void Previous();
    void Pause();
    void PlayPause();
    void Stop();
    void Play();
    void Seek(qlonglong offset);
    void SetPosition(const QDBusObjectPath& trackId, qlonglong position);
    void OpenUri(const QString& uri);

Q_SIGNALS:
    void Seeked(qlonglong position);

private:
    MprisService& service_;
};

}  // namespace sylvora::app
