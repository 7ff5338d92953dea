#pragma once

// Runs the built sylvora-cli as a user would, with its output captured.

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace sylvora::test {

struct CliResult {
    int exitCode = -1;
    bool crashed = false;
    QString out;
    QString err;
};

CliResult runCli(const QStringList& arguments, const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());

// The lines of `text` without the empty ones.
QStringList nonEmptyLines(const QString& text);

}  // namespace sylvora::test
