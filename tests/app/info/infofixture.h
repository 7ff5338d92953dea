#pragma once

// The application started once per suite, with its settings in a temporary folder, and helpers to
// give the current world texts and a picture.

#include <gtest/gtest.h>

#include <QColor>
#include <QSize>
#include <QString>
#include <memory>

#include "support/tempdir.h"

namespace sylvora::test {

class InfoAppTest : public ::testing::Test {
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();
    void SetUp() override;
    void TearDown() override;

    // Writes a picture of one colour and makes it the world's picture.
    void setWorldPicture(QSize size, QColor color);
    static void settle();  // runs what the event loop has queued

    static std::unique_ptr<TempDir> folder;
    int pictures = 0;
};

}  // namespace sylvora::test
