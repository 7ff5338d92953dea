#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QLocale>

#include "core/strings/stringresources.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    QCoreApplication app(argc, argv);
    // English whatever the machine's language, so the expected texts hold everywhere.
    sylvora::installStringTables(QLocale(QLocale::English));
    return RUN_ALL_TESTS();
}
