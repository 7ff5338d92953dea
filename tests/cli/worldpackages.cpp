#include "worldpackages.h"

#include <QDir>

namespace sylvora::test {

QString loopEntry(const QString& file, double volume) {
    return QStringLiteral("<dict><key>File Name</key><string>%1</string><key>Volume</key><real>%2</real></dict>\n")
        .arg(file).arg(volume);
}

QString environmentEntry(const QString& file, double minVolume, double maxVolume, int minInterval, int maxInterval,
                         int groupIndex) {
    return QStringLiteral(
               "<dict><key>File Name</key><string>%1</string>"
               "<key>Minimum Volume</key><real>%2</real><key>Maximum Volume</key><real>%3</real>"
               "<key>Minimum Interval</key><integer>%4</integer><key>Maximum Interval</key><integer>%5</integer>"
               "<key>Group Index</key><integer>%6</integer></dict>\n")
        .arg(file).arg(minVolume).arg(maxVolume).arg(minInterval).arg(maxInterval).arg(groupIndex);
}

QString groupEntry(const QString& name, int minInterval, int maxInterval) {
    return QStringLiteral(
               "<dict><key>Group Name</key><string>%1</string>"
               "<key>Minimum Interval</key><integer>%2</integer><key>Maximum Interval</key><integer>%3</integer></dict>\n")
        .arg(name).arg(minInterval).arg(maxInterval);
}

bool addSound(const QString& package, const QString& folder, const QString& name, const ToneSpec& tone) {
    const QDir dir(package);
    return dir.mkpath(folder) && writeSoundFile(dir.filePath(folder + u'/' + name), tone);
}

}  // namespace sylvora::test
