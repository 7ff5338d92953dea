// Windows need a QApplication where the other suites' shared main() makes a QCoreApplication; this
// main() takes its place (the linker then leaves the shared one out).

#include <gtest/gtest.h>

#include <QApplication>

#include "core/strings/stringresources.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    // Headless always, also when CTest lists the tests without the suite's environment.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    sylvora::installStringTables();
    return RUN_ALL_TESTS();
}
