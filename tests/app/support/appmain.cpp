#include <gtest/gtest.h>

#include <QApplication>
#include <QLocale>

#include "core/strings/stringresources.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    // Offscreen unless told otherwise, also when the build lists the tests without a display.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Sylvora"));
    QApplication::setApplicationName(QStringLiteral("Sylvora"));
    QApplication::setQuitOnLastWindowClosed(false);
    // English whatever the machine's language, so the expected texts hold everywhere.
    sylvora::installStringTables(QLocale(QLocale::English));
    return RUN_ALL_TESTS();
}
