// examplesynth: generates the example world at build time, and assembles worlds from sound files
// for the benchmark scripts.
//
//   examplesynth example OUTPUT_FOLDER [NAME...]
//       writes OUTPUT_FOLDER/NAME.sylvora for every bundled world (or the ones named)
//   examplesynth assemble PACKAGE.sylvora [--name NAME] [--crossfade S]
//                [--loop FILE]... [--environment FILE]... [--interval MIN:MAX]
//       saves a world of those files; --interval applies to the environment sounds

#include <QCoreApplication>
#include <QLocale>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <iterator>

#include "core/strings/stringresources.h"
#include "bundledworlds.h"
#include "packagewriter.h"

namespace {

int fail(const QString& message) {
    std::fprintf(stderr, "examplesynth: %s\n", message.toLocal8Bit().constData());
    return 1;
}

int runExample(const QStringList& arguments) {
    if (arguments.isEmpty()) return fail(QStringLiteral("usage: examplesynth example OUTPUT_FOLDER [NAME...]"));
    const QString folder = QFileInfo(arguments[0]).absoluteFilePath();
    const QStringList wanted = arguments.mid(1);
    for (const QString& name : wanted) {
        if (std::none_of(std::begin(sylvora::synth::BUNDLED_WORLDS), std::end(sylvora::synth::BUNDLED_WORLDS),
                         [&](const auto& world) { return name == QLatin1String(world.name); })) {
            return fail(QStringLiteral("there is no bundled world named '%1'").arg(name));
        }
    }
    if (!QDir().mkpath(folder)) return fail(QStringLiteral("cannot create %1").arg(folder));
    for (const auto& world : sylvora::synth::BUNDLED_WORLDS) {
        const QString name = QLatin1String(world.name);
        if (!wanted.isEmpty() && !wanted.contains(name)) continue;
        // Each world's files are staged apart and the package replaced only once all of it is written.
        QTemporaryDir staging(QDir(folder).filePath(QStringLiteral(".staging-XXXXXX")));
        if (!staging.isValid()) return fail(QStringLiteral("cannot create a staging folder in %1").arg(folder));
        const QString package = QDir(folder).filePath(name + QStringLiteral(".sylvora"));
        if (const QString error = world.build(staging.path(), package); !error.isEmpty()) return fail(error);
        std::printf("examplesynth: wrote %s\n", package.toLocal8Bit().constData());
    }
    return 0;
}

int runAssemble(const QStringList& arguments) {
    sylvora::synth::WorldRecipe recipe;
    QString package;
    int minInterval = 20;
    int maxInterval = 40;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        const bool hasValue = i + 1 < arguments.size();
        if (argument == u"--name" && hasValue) {
            recipe.name = arguments[++i];
        } else if (argument == u"--crossfade" && hasValue) {
            recipe.crossfade = arguments[++i].toInt();
        } else if (argument == u"--loop" && hasValue) {
            recipe.loops.push_back({QFileInfo(arguments[++i]).absoluteFilePath(), 1.0});
        } else if (argument == u"--environment" && hasValue) {
            recipe.environment.push_back({QFileInfo(arguments[++i]).absoluteFilePath(), 1.0, 1.0, minInterval, maxInterval, -1});
        } else if (argument == u"--interval" && hasValue) {
            const QStringList bounds = arguments[++i].split(u':');
            if (bounds.size() != 2) return fail(QStringLiteral("--interval wants MIN:MAX"));
            minInterval = bounds[0].toInt();
            maxInterval = bounds[1].toInt();
            for (auto& sound : recipe.environment) {
                sound.minInterval = minInterval;
                sound.maxInterval = maxInterval;
            }
        } else if (!argument.startsWith(u"--") && package.isEmpty()) {
            package = QFileInfo(argument).absoluteFilePath();
        } else {
            return fail(QStringLiteral("unexpected argument '%1'").arg(argument));
        }
    }
    if (!package.endsWith(QStringLiteral(".sylvora"))) return fail(QStringLiteral("the package name must end in .sylvora"));
    if (const QString error = sylvora::synth::writeWorldPackage(recipe, package); !error.isEmpty()) return fail(error);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    // The bundled worlds are written in English whatever the language of the machine building them.
    sylvora::installStringTables(QLocale(QLocale::English));
    QStringList arguments = QCoreApplication::arguments().mid(1);
    const QString mode = arguments.isEmpty() ? QString() : arguments.takeFirst();
    if (mode == u"example") return runExample(arguments);
    if (mode == u"assemble") return runAssemble(arguments);
    return fail(QStringLiteral("usage: examplesynth example OUTPUT_FOLDER [NAME...] | examplesynth assemble PACKAGE.sylvora [options]"));
}
