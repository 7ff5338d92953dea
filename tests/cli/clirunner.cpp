#include "clirunner.h"

#include <QProcess>

namespace sylvora::test {

CliResult runCli(const QStringList& arguments, const QProcessEnvironment& environment) {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(SYLVORA_CLI_PATH), arguments);
    CliResult result;
    // Waits for the program to end however long a slow (sanitized) build takes; no verdict depends
    // on how long it took.
    if (!process.waitForStarted(-1) || !process.waitForFinished(-1)) {
        result.err = process.errorString();
        return result;
    }
    result.crashed = process.exitStatus() != QProcess::NormalExit;
    result.exitCode = process.exitCode();
    result.out = QString::fromUtf8(process.readAllStandardOutput());
    result.err = QString::fromUtf8(process.readAllStandardError());
    return result;
}

QStringList nonEmptyLines(const QString& text) {
    return text.split(u'\n', Qt::SkipEmptyParts);
}

}  // namespace sylvora::test
