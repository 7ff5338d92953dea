#include "cli/worldjson.h"

#include <QJsonArray>

namespace sylvora::cli {

namespace {

QJsonValue stringOrNull(const QString& text) {
    return text.isNull() ? QJsonValue(QJsonValue::Null) : QJsonValue(text);
}

template <typename T>
QJsonValue optionalOrNull(const std::optional<T>& value) {
    return value ? QJsonValue(*value) : QJsonValue(QJsonValue::Null);
}

}  // namespace

QJsonObject worldSummaryToJson(const WorldSummary& summary) {
    QJsonArray groups;
    for (const WorldSummary::Group& group : summary.groups) {
        groups.append(QJsonObject{{QStringLiteral("name"), stringOrNull(group.name)},
                                  {QStringLiteral("min_interval"), group.minInterval},
                                  {QStringLiteral("max_interval"), group.maxInterval}});
    }
    QJsonArray loops;
    for (const WorldSummary::Loop& loop : summary.loops) {
        loops.append(QJsonObject{{QStringLiteral("file"), stringOrNull(loop.file)},
                                 {QStringLiteral("volume"), loop.volume},
                                 {QStringLiteral("duration"), optionalOrNull(loop.duration)}});
    }
    QJsonArray environment;
    for (const WorldSummary::Environment& sound : summary.environment) {
        environment.append(QJsonObject{{QStringLiteral("file"), stringOrNull(sound.file)},
                                       {QStringLiteral("min_volume"), sound.minVolume},
                                       {QStringLiteral("max_volume"), sound.maxVolume},
                                       {QStringLiteral("min_interval"), sound.minInterval},
                                       {QStringLiteral("max_interval"), sound.maxInterval},
                                       {QStringLiteral("group"), optionalOrNull(sound.group)}});
    }
    return QJsonObject{
        {QStringLiteral("status"), static_cast<int>(summary.status)},
        {QStringLiteral("name"), stringOrNull(summary.name)},
        {QStringLiteral("author"), stringOrNull(summary.author)},
        {QStringLiteral("description"), stringOrNull(summary.description)},
        {QStringLiteral("crossfade"), summary.crossfade},
        {QStringLiteral("picture"), stringOrNull(summary.picture)},
        {QStringLiteral("groups"), groups},
        {QStringLiteral("loop_sounds"), loops},
        {QStringLiteral("environment_sounds"), environment},
        {QStringLiteral("warnings"), QJsonArray::fromStringList(summary.warnings)},
    };
}

}  // namespace sylvora::cli
