#include "app/shell/alerts.h"

#include <QApplication>
#include <QMessageBox>

#include "app/shell/appstrings.h"
#include "core/strings/stringresources.h"

namespace sylvora::app {

QString copyStatusExplanation(OSStatus status) {
    const QByteArray key = QString::fromLatin1(STATUS_EXPLANATION_KEY_FORMAT).arg(status).toLatin1();
    const QString text = copyLocalizedString(key.constData(), ERRORS_STRINGS_FILE);
    return text == QLatin1String(key) ? QString() : text;  // no entry: nothing better than the number
}

void showErrorAlert(const QString& message, OSStatus status) {
    QMessageBox alert(QMessageBox::Critical, QApplication::applicationDisplayName(), message, QMessageBox::Ok);
    if (status != noErr) {
        alert.setInformativeText(QString::asprintf(INTEGER_FORMAT_STRING, static_cast<int>(status)));
        const QString explanation = copyStatusExplanation(status);
        if (!explanation.isEmpty()) alert.setDetailedText(explanation);
    }
    alert.setWindowModality(Qt::ApplicationModal);
    alert.exec();
}

}  // namespace sylvora::app
