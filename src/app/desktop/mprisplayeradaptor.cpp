#include "app/desktop/mprisplayeradaptor.h"

#include "app/desktop/mprisservice.h"

namespace sylvora::app {

MprisPlayerAdaptor::MprisPlayerAdaptor(MprisService& service) : QDBusAbstractAdaptor(&service), service_(service) {}

QString MprisPlayerAdaptor::playbackStatus() const { return service_.playbackStatus(); }
QVariantMap MprisPlayerAdaptor::metadata() const { return service_.metadata(); }
double MprisPlayerAdaptor::volume() const { return service_.volume(); }
void MprisPlayerAdaptor::setVolume(double volume) { service_.setVolume(volume); }
bool MprisPlayerAdaptor::canGoNext() const { return service_.canGoNext(); }
bool MprisPlayerAdaptor::canPlay() const { return service_.canPlay(); }

void MprisPlayerAdaptor::Next() { service_.next(); }
void MprisPlayerAdaptor::Previous() { service_.previous(); }
void MprisPlayerAdaptor::Pause() { service_.pause(); }
void MprisPlayerAdaptor::PlayPause() { service_.playPause(); }
void MprisPlayerAdaptor::Stop() { service_.stop(); }
void MprisPlayerAdaptor::Play() { service_.play(); }
void MprisPlayerAdaptor::Seek(qlonglong) {}
void MprisPlayerAdaptor::SetPosition(const QDBusObjectPath&, qlonglong) {}
void MprisPlayerAdaptor::OpenUri(const QString& uri) { service_.openUri(uri); }

}  // namespace sylvora::app
