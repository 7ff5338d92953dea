// The Get Info window's slide with a 1920 x 1200 picture shown at full size, on a real X display:
// frames painted per second and the CPU of this process, of its main thread (where the window
// lives; the rest is the idle engine's) and of the X server, when its process id is given, while
// the texts slide back and forth without pause, and while the window stands still.
// Run through bench/info_slide.sh, which starts an Xvfb display large enough for the picture.
//
// Usage: info_slide_fps [seconds per phase, default 5] [X server pid] [picture WIDTHxHEIGHT, default 1920x1200]
//                       [short: a one-line description instead of six lines]

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QImage>
#include <QPaintEvent>
#include <QPainter>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <vector>

#include "app/info/getinfowindow.h"
#include "app/shell/globals.h"
#include "app/shell/startup.h"
#include "core/files/alias.h"
#include "core/strings/stringresources.h"
#include "support/tempdir.h"

using namespace sylvora;

namespace {

double cpuSeconds(clockid_t clock) {
    timespec t{};
    clock_gettime(clock, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

double serverCpuSeconds(qint64 pid) {
    if (pid <= 0) return 0.0;
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly)) return 0.0;
    const QList<QByteArray> fields = stat.readAll().split(' ');
    if (fields.size() < 15) return 0.0;
    return static_cast<double>(fields[13].toLongLong() + fields[14].toLongLong()) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

void runFor(int milliseconds) {
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

// Paint times of the overlay that carries the texts, and the pixels it repainted.
class PaintClock : public QObject {
public:
    QElapsedTimer clock;
    std::vector<qint64> paints;
    qint64 pixels = 0;
    std::function<void()> afterPaint;
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            paints.push_back(clock.nsecsElapsed());
            for (const QRect& rect : static_cast<QPaintEvent*>(event)->region()) pixels += qint64(rect.width()) * rect.height();
            if (afterPaint) afterPaint();
        }
        return QObject::eventFilter(watched, event);
    }
};

struct Phase {
    double seconds, cpu, windowCpu, serverCpu;  // windowCpu: the main thread's, where the window lives
    std::size_t frames;
    double worstGapMs;
    std::size_t longGaps;  // frames more than 1.5 frame times after the one before
    double pixelsPerFrame;
};

Phase measure(PaintClock& paints, int milliseconds, qint64 serverPid) {
    paints.paints.clear();
    paints.pixels = 0;
    paints.clock.start();
    const double cpu0 = cpuSeconds(CLOCK_PROCESS_CPUTIME_ID);
    const double window0 = cpuSeconds(CLOCK_THREAD_CPUTIME_ID);
    const double server0 = serverCpuSeconds(serverPid);
    runFor(milliseconds);
    const double seconds = static_cast<double>(paints.clock.nsecsElapsed()) * 1e-9;
    Phase phase{seconds, cpuSeconds(CLOCK_PROCESS_CPUTIME_ID) - cpu0, cpuSeconds(CLOCK_THREAD_CPUTIME_ID) - window0,
                serverCpuSeconds(serverPid) - server0, paints.paints.size(), 0.0, 0,
                paints.paints.empty() ? 0.0 : static_cast<double>(paints.pixels) / static_cast<double>(paints.paints.size())};
    for (std::size_t i = 1; i < paints.paints.size(); ++i) {
        const double gapMs = static_cast<double>(paints.paints[i] - paints.paints[i - 1]) * 1e-6;
        phase.worstGapMs = std::max(phase.worstGapMs, gapMs);
        if (gapMs > 1.5 * 1000.0 / 90.0) ++phase.longGaps;
    }
    return phase;
}

void report(const char* name, const Phase& p) {
    std::printf("%-8s %5.2f s  %4zu frames  %5.1f frames/s  worst gap %5.1f ms (%zu over 16.7 ms)  CPU %5.1f%% of a core"
                " (window's thread %5.2f%%)  X server %5.1f%%  %.2f Mpx a frame\n",
                name, p.seconds, p.frames, static_cast<double>(p.frames) / p.seconds, p.worstGapMs, p.longGaps,
                100.0 * p.cpu / p.seconds, 100.0 * p.windowCpu / p.seconds, 100.0 * p.serverCpu / p.seconds, p.pixelsPerFrame * 1e-6);
}

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const int milliseconds = (argc > 1 ? std::max(1, atoi(argv[1])) : 5) * 1000;
    const qint64 serverPid = argc > 2 ? atoll(argv[2]) : 0;
    const QStringList size = QString::fromLatin1(argc > 3 ? argv[3] : "1920x1200").split(QLatin1Char('x'));
    const int pictureWidth = std::max(150, size.value(0).toInt());
    const int pictureHeight = std::max(150, size.value(1).toInt());
    installStringTables();
    test::TempDir folder;
    qputenv("XDG_CONFIG_HOME", folder.makeDir(QStringLiteral("config")).toUtf8());
    app::startUp({.audioDevice = false, .tray = false});

    // A picture with detail everywhere, so that no copy of it is cheaper than a real one.
    QImage picture(pictureWidth, pictureHeight, QImage::Format_RGB32);
    for (int y = 0; y < picture.height(); ++y) {
        auto* row = reinterpret_cast<QRgb*>(picture.scanLine(y));
        for (int x = 0; x < picture.width(); ++x) row[x] = qRgb((x * 7) & 255, (y * 3 + x) & 255, (x ^ y) & 255);
    }
    const QString path = folder.filePath(QStringLiteral("picture.png"));
    picture.save(path);
    AliasHandle alias;
    FSNewAlias(test::refOf(path), alias);
    app::gCurrentWorld->setName(QStringLiteral("Evening Forest"));
    app::gCurrentWorld->setAuthor(QStringLiteral("The Sylvora project"));
    // By default six lines of description, so the texts cover the picture from top to bottom and
    // some of them are in view at every step of a slide: the most there is to move. "short" gives
    // one line, as many worlds have.
    const bool shortText = argc > 4 && QByteArray(argv[4]) == "short";
    app::gCurrentWorld->setDescription(
        shortText ? QStringLiteral("Crickets, a creek and an owl.")
                  : QStringLiteral(
                        "Crickets in the grass, a slow creek over stones, and now and then an owl from the far side of "
                        "the clearing. Later the wind turns, the frogs begin by the water, and a last blackbird sings "
                        "from the top of the oldest beech before the night settles over the valley and the stars come "
                        "out one by one above the hills, while far away a dog barks at a passing car."));
    app::gCurrentWorld->setPictureFileAlias(alias.get());

    app::GetInfoWindow& window = *app::gGetInfoWindow;
    window.show();
    runFor(1500);
    QWidget* view = window.myGetControlByID(app::GetInfoWindow::CONTROLS_SIGNATURE, app::GetInfoWindow::IMAGE_VIEW_ID);
    QWidget* overlay = view->findChild<QWidget*>(QStringLiteral("infoOverlay"));
    if (overlay == nullptr) {
        std::fprintf(stderr, "the window shows no overlay\n");
        return 1;
    }
    std::printf("picture %dx%d, shown at %dx%d\n", pictureWidth, pictureHeight, view->width(), view->height());
    PaintClock paints;
    overlay->installEventFilter(&paints);

    report("still", measure(paints, milliseconds, serverPid));
    // The next slide begins a frame after the last paint of one, away and back again, for the whole
    // phase. A watchdog restarted by every paint finds the end, so nothing wakes the process between
    // frames and it does only what a slide costs.
    QTimer slideEnded;
    slideEnded.setSingleShot(true);
    slideEnded.setTimerType(Qt::PreciseTimer);
    slideEnded.setInterval(12);
    QObject::connect(&slideEnded, &QTimer::timeout, [&window, &slideEnded] {
        if (!window.isSliding()) window.handleCommand(app::command::TOGGLE_INFO);
        slideEnded.start();
    });
    paints.afterPaint = [&slideEnded] { slideEnded.start(); };
    window.handleCommand(app::command::TOGGLE_INFO);
    slideEnded.start();
    report("sliding", measure(paints, milliseconds, serverPid));
    paints.afterPaint = nullptr;
    slideEnded.stop();
    runFor(500);
    report("still", measure(paints, milliseconds, serverPid));

    app::shutDown();
    return 0;
}
