#include "app/desktop/mprisrootadaptor.h"

#include <QGuiApplication>

#include "app/desktop/mprisservice.h"

namespace sylvora::app {

MprisRootAdaptor::MprisRootAdaptor(MprisService& service) : QDBusAbstractAdaptor(&service), service_(service) {}

QString MprisRootAdaptor::identity() const {
    const QString name = QGuiApplication::applicationDisplayName();
    return name.isEmpty() ? QStringLiteral("Sylvora") : name;
}

QString MprisRootAdaptor::desktopEntry() const {
    const QString entry = QGuiApplication::desktopFileName();
    return entry.isEmpty() ? QStringLiteral("org.sylvora.Sylvora") : entry;
}

void MprisRootAdaptor::Raise() { service_.raise(); }
void MprisRootAdaptor::Quit() { service_.quit(); }

}  // namespace sylvora::app
