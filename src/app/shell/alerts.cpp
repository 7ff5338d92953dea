#include "app/shell/alerts.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>

#include "app/shell/appstrings.h"
#include "app/shell/globals.h"
#include "core/strings/stringresources.h"
#include "core/world/world.h"

namespace sylvora::app {

namespace {

// Why the package at `path` could not be opened, as far as the package itself shows; empty when it
// does not.
QString copyOpenFailureReason(const QString& path, OSStatus status) {
    const QDir package(path);
    if (path.isEmpty()) return {};
    if (status == unreadablePropertyListErr) return copyLocalizedString(REASON_DAMAGED_DATA_FILE_KEY, ERRORS_STRINGS_FILE);
    if (status != fnfErr) return {};
    if (!package.exists()) return copyLocalizedString(REASON_MISSING_PACKAGE_KEY, ERRORS_STRINGS_FILE);
    if (!QFileInfo::exists(package.filePath(QLatin1String(World::DATA_FILE_NAME)))) {
        return copyLocalizedString(REASON_MISSING_DATA_FILE_KEY, ERRORS_STRINGS_FILE);
    }
    for (const char* folder : {World::LOOP_SOUNDS_SUBDIRECTORY_NAME, World::ENVIRONMENT_SOUNDS_SUBDIRECTORY_NAME}) {
        if (!QFileInfo(package.filePath(QLatin1String(folder))).isDir()) {
            return copyLocalizedString(REASON_MISSING_SOUND_FOLDER_KEY, ERRORS_STRINGS_FILE).arg(QLatin1String(folder));
        }
    }
    return {};
}

}  // namespace

QString copyOpenErrorMessage(const QString& packagePath, OSStatus status, const QString& name) {
    QString shown = name;
    if (shown.isEmpty()) shown = QFileInfo(packagePath).completeBaseName();
    if (shown.isEmpty()) return copyLocalizedString(UNKNOWN_ERROR_OPENING_WORLD, ERRORS_STRINGS_FILE);
    const QString reason = copyOpenFailureReason(packagePath, status);
    if (reason.isEmpty()) return copyLocalizedString(WORLD_NOT_OPENED_KEY, ERRORS_STRINGS_FILE).arg(shown);
    return copyLocalizedString(WORLD_NOT_OPENED_BECAUSE_KEY, ERRORS_STRINGS_FILE).arg(shown, reason);
}

void showOpenErrorAlert(const QString& packagePath, OSStatus status, const QString& name) {
    showErrorAlert(copyOpenErrorMessage(packagePath, status, name), status);
}

void showErrorAlert(const QString& message, OSStatus status, const QString& details) {
    QMessageBox alert(QMessageBox::Critical, QApplication::applicationDisplayName(), message, QMessageBox::Ok);
    if (status != noErr) alert.setInformativeText(capitalizedFirstLetter(copyStatusDescription(status)) + QLatin1Char('.'));
    if (!details.isEmpty()) alert.setDetailedText(details);
    alert.setWindowModality(Qt::ApplicationModal);
    alert.exec();
}

void showSaveErrorAlert(OSStatus status) {
    const QString world = gCurrentWorld->copyDefaultSaveAsFilename(false);
    const QString missing = gCurrentWorld->getMissingFileOfLastSave();
    const QString message =
        missing.isEmpty() ? copyLocalizedString(ERROR_SAVING_NAMED_WORLD_KEY, ERRORS_STRINGS_FILE).arg(world)
                          : copyLocalizedString(ERROR_SAVING_WORLD_MISSING_FILE_KEY, ERRORS_STRINGS_FILE).arg(world, missing);
    const QString kept = gCurrentWorld->getKeptPreviousVersion();
    showErrorAlert(message, status,
                   kept.isEmpty() ? QString() : copyLocalizedString(PREVIOUS_VERSION_KEPT_KEY, ERRORS_STRINGS_FILE).arg(kept));
}

}  // namespace sylvora::app
