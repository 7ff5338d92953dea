#pragma once

// A world wired to a real engine and a virtual event loop, in a temporary folder, with helpers that
// write real sound files and world packages the way other writers would.

#include <gtest/gtest.h>

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>
#include <memory>

#include "audio/engine/engine.h"
#include "core/files/alias.h"
#include "core/prefs/preferences.h"
#include "core/time/virtualeventloop.h"
#include "core/world/world.h"
#include "support/tempdir.h"

#include <ostream>

// Readable failure messages for Qt strings.
inline void PrintTo(const QString& text, std::ostream* out) { *out << '"' << text.toStdString() << '"'; }

namespace sylvora::test {

// Wraps dictionary entries (XML) into a complete XML property list.
QByteArray xmlPlist(const QString& dictEntries);
// The same for any root element.
QByteArray xmlPlistWithRoot(const QString& rootElement);

// Every file below `folder` (relative path -> content), to compare trees byte for byte.
QMap<QString, QByteArray> snapshotTree(const QString& folder);
// The names directly inside `folder`.
QStringList entriesOf(const QString& folder);
quint64 inodeOf(const QString& path);

class PackageTest : public ::testing::Test {
protected:
    static constexpr int SAMPLE_RATE = 48000;
    static constexpr unsigned SEED = 11;

    PackageTest();
    ~PackageTest() override;

    // A short sine tone at `relative` inside the test folder; returns its path.
    QString writeSound(const QString& relative, double seconds = 0.1, double frequency = 440.0);
    // A small PNG picture at `relative`; returns its path.
    QString writePicture(const QString& relative);
    static AliasHandle aliasOf(const QString& path);
    static FSRef ref(const QString& path);

    // A package folder `name` holding `data.plist` with `plistBytes` and, when given, sound files
    // of those names in its two sound folders. Returns its path.
    QString makePackage(const QString& name, const QByteArray& plistBytes, const QStringList& loopFiles = {},
                        const QStringList& environmentFiles = {});
    OSStatus load(const QString& packagePath);

    TempDir dir;
    // The known worlds land here; gPrefs points at it for the length of a test.
    std::unique_ptr<Preferences> prefs;
    audio::Engine engine{SAMPLE_RATE};
    VirtualEventLoop loop;
    World world{engine, loop, SEED};
};

}  // namespace sylvora::test
