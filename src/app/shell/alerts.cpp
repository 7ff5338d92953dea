#include "app/shell/alerts.h"

#include <QApplication>
#include <QMessageBox>

#include "app/shell/appstrings.h"
#include "app/shell/globals.h"
#include "core/strings/stringresources.h"
#include "core/world/world.h"

namespace sylvora::app {

void showErrorAlert(const QString& message, OSStatus status, const QString& details) {
    QMessageBox alert(QMessageBox::Critical, QApplication::applicationDisplayName(), message, QMessageBox::Ok);
    if (status != noErr) alert.setInformativeText(capitalizedFirstLetter(copyStatusDescription(status)) + QLatin1Char('.'));
    if (!details.isEmpty()) alert.setDetailedText(details);
    alert.setWindowModality(Qt::ApplicationModal);
    alert.exec();
}

void showSaveErrorAlert(OSStatus status) {
    const QString message =
        copyLocalizedString(ERROR_SAVING_NAMED_WORLD_KEY, ERRORS_STRINGS_FILE).arg(gCurrentWorld->copyDefaultSaveAsFilename(false));
    const QString kept = gCurrentWorld->getKeptPreviousVersion();
    showErrorAlert(message, status,
                   kept.isEmpty() ? QString() : copyLocalizedString(PREVIOUS_VERSION_KEPT_KEY, ERRORS_STRINGS_FILE).arg(kept));
}

}  // namespace sylvora::app
