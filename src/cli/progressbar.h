#pragma once

// A progress bar for long offline work, drawn on a terminal only: a pipe or a log gets nothing,
// so scripts that read the output see no control characters.

#include <QString>
#include <chrono>
#include <cstdio>

namespace sylvora::cli {

class ProgressBar {
public:
    ProgressBar(std::FILE* stream, QString label);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    // `fraction` 0..1; redrawn at most a few times a second and whenever the percentage changes.
    void update(double fraction);
    void finish();

    // The bar's text for a fraction and a width in columns, without control characters.
    static QString render(const QString& label, double fraction, int width);

private:
    std::FILE* stream;
    QString label;
    bool enabled;
    int lastPermille = -1;
    std::chrono::steady_clock::time_point lastDraw;
};

}  // namespace sylvora::cli
