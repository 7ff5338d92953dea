#include "cli/worldtext.h"

#include <QStringList>

namespace sylvora::cli {

namespace {

constexpr int LABEL_WIDTH = 13;
constexpr int TEXT_WIDTH = 78;

QString orNone(const QString& text) {
    return text.isNull() ? QStringLiteral("(none)") : text;
}

QString seconds(double value) {
    return QStringLiteral("%1 s").arg(value, 0, 'f', 1);
}

QString volume(double value) {
    return QString::number(value, 'f', 2);
}

QString range(double low, double high, const QString& unit = {}) {
    const QString text = QString::number(low) == QString::number(high)
                             ? QString::number(low)
                             : QStringLiteral("%1 to %2").arg(low).arg(high);
    return unit.isEmpty() ? text : text + u' ' + unit;
}

// Wraps `text` to the width of the output, indenting the lines after the first under the label.
QString wrapped(const QString& text) {
    QStringList lines;
    QString line;
    for (const QString& word : text.split(u' ', Qt::SkipEmptyParts)) {
        if (!line.isEmpty() && line.size() + 1 + word.size() > TEXT_WIDTH - LABEL_WIDTH) {
            lines << line;
            line.clear();
        }
        line += (line.isEmpty() ? QString() : QStringLiteral(" ")) + word;
    }
    if (!line.isEmpty()) lines << line;
    return lines.join(u'\n' + QString(LABEL_WIDTH, u' '));
}

QString field(const QString& label, const QString& value) {
    return (label + u':').leftJustified(LABEL_WIDTH) + value + u'\n';
}

}  // namespace

QString worldSummaryToText(const WorldSummary& summary) {
    QString out;
    out += field(QStringLiteral("Name"), orNone(summary.name));
    out += field(QStringLiteral("Author"), orNone(summary.author));
    out += field(QStringLiteral("Description"), summary.description.isNull() ? orNone(summary.description) : wrapped(summary.description));
    out += field(QStringLiteral("Crossfade"), QStringLiteral("%1 s").arg(summary.crossfade));
    out += field(QStringLiteral("Picture"), orNone(summary.picture));

    out += QStringLiteral("\nGroups (%1)\n").arg(summary.groups.size());
    for (std::size_t i = 0; i < summary.groups.size(); ++i) {
        const WorldSummary::Group& group = summary.groups[i];
        out += QStringLiteral("  %1. %2, every %3\n").arg(i + 1).arg(orNone(group.name), range(group.minInterval, group.maxInterval, QStringLiteral("s")));
    }

    out += QStringLiteral("\nLoop sounds (%1)\n").arg(summary.loops.size());
    for (std::size_t i = 0; i < summary.loops.size(); ++i) {
        const WorldSummary::Loop& loop = summary.loops[i];
        out += QStringLiteral("  %1. %2, volume %3, %4\n")
                   .arg(i + 1).arg(orNone(loop.file), volume(loop.volume),
                        loop.duration ? seconds(*loop.duration) : QStringLiteral("length unknown"));
    }

    out += QStringLiteral("\nEnvironment sounds (%1)\n").arg(summary.environment.size());
    for (std::size_t i = 0; i < summary.environment.size(); ++i) {
        const WorldSummary::Environment& sound = summary.environment[i];
        QString where = QStringLiteral("on its own");
        if (sound.group && static_cast<std::size_t>(*sound.group) < summary.groups.size()) {
            where = QStringLiteral("in group %1 (%2)").arg(*sound.group + 1).arg(orNone(summary.groups[static_cast<std::size_t>(*sound.group)].name));
        }
        out += QStringLiteral("  %1. %2, volume %3, every %4, %5%6\n")
                   .arg(i + 1)
                   .arg(orNone(sound.file),
                        sound.minVolume == sound.maxVolume ? volume(sound.minVolume)
                                                           : volume(sound.minVolume) + QStringLiteral(" to ") + volume(sound.maxVolume),
                        range(sound.minInterval, sound.maxInterval, QStringLiteral("s")), where,
                        sound.duration ? QStringLiteral(", ") + seconds(*sound.duration) : QString());
    }

    if (!summary.warnings.isEmpty()) {
        out += QStringLiteral("\nWarnings (%1)\n").arg(summary.warnings.size());
        for (const QString& warning : summary.warnings) out += QStringLiteral("  ") + warning + u'\n';
    }
    out += u'\n' + field(QStringLiteral("Status"), summary.status == 0 ? QStringLiteral("0 (loaded)")
                                                                       : QStringLiteral("%1 (failed)").arg(summary.status));
    return out;
}

}  // namespace sylvora::cli
