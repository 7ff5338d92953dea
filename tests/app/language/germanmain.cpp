#include <gtest/gtest.h>

#include <QApplication>

#include "core/strings/stringresources.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // A German session, whatever the machine's own: the variables that would outrank LANG go.
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANGUAGE"})
        qunsetenv(name);
    qputenv("LANG", "de_DE.UTF-8");
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Sylvora"));
    QApplication::setApplicationName(QStringLiteral("Sylvora"));
    QApplication::setQuitOnLastWindowClosed(false);
    sylvora::installStringTables();  // as the application does: the desktop's language
    return RUN_ALL_TESTS();
}
