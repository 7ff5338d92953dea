// The desktop tests' main(): a QApplication (windows, menus) around GoogleTest, offscreen unless
// told otherwise, also when CTest lists the tests.

#include <gtest/gtest.h>

#include <QApplication>

#include "core/strings/stringresources.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    sylvora::installStringTables();
    return RUN_ALL_TESTS();
}
