#include <gtest/gtest.h>

#include <QApplication>

#include "core/strings/stringresources.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Sylvora"));
    QApplication::setApplicationName(QStringLiteral("Sylvora"));
    QApplication::setQuitOnLastWindowClosed(false);
    sylvora::installStringTables();
    return RUN_ALL_TESTS();
}
