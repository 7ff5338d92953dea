#include <gtest/gtest.h>

#include <QCoreApplication>

#include "core/strings/stringresources.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    QCoreApplication app(argc, argv);
    sylvora::installStringTables();
    return RUN_ALL_TESTS();
}
