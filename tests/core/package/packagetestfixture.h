#pragma once

// The shared world fixture with the known-worlds preferences in its folder, and views of folder
// trees to compare what a save left on disk.

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>
#include <memory>

#include "core/prefs/preferences.h"
#include "support/worldfixture.h"

namespace sylvora::test {

// Every file below `folder` (relative path -> content), to compare trees byte for byte.
QMap<QString, QByteArray> snapshotTree(const QString& folder);
// The names directly inside `folder`, sorted.
QStringList folderEntries(const QString& folder);
quint64 inodeOf(const QString& path);
// The temporary packages a save works in ("temp <n>.sylvora") left directly inside `folder`.
QStringList tempPackagesIn(const QString& folder);

class PackageTest : public WorldTest {
protected:
    PackageTest();
    ~PackageTest() override;

    // The known worlds land here; gPrefs points at it for the length of a test.
    std::unique_ptr<Preferences> prefs;
};

}  // namespace sylvora::test
