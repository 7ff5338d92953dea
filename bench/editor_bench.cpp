// The world editor's figures: fifty sound files dropped on the loop list at once are shown within
// 300 ms, and the editor opens on a world of 50 loop and 50 environment sounds within 150 ms.
// Run with QT_QPA_PLATFORM=offscreen.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QSlider>
#include <QTemporaryDir>
#include <QUrl>

#include "app/editor/editorsoundlist.h"
#include "app/editor/worldeditorwindow.h"
#include "app/shell/globals.h"
#include "app/shell/startup.h"
#include "support/soundfiles.h"
#include "support/worldfixture.h"

namespace {

using namespace sylvora;

QStringList writeSounds(const QTemporaryDir& dir, const QString& prefix, int count) {
    QStringList paths;
    test::ToneSpec tone;
    tone.seconds = 0.5;
    tone.sampleRate = 22050;
    for (int i = 0; i < count; ++i) {
        const QString path = dir.filePath(QStringLiteral("%1 %2.wav").arg(prefix).arg(i));
        test::writeSoundFile(path, tone);
        paths << path;
    }
    return paths;
}

app::EditorSoundList* loopList() {
    return qobject_cast<app::EditorSoundList*>(
        app::gWorldEditorWindow->myGetControlByID(app::fourCharCode("WET1"), 3));
}

void dropOnBackground(app::EditorSoundList* list, const QMimeData& data) {
    const QPoint at(10, list->viewport()->height() - 5);
    QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(list->viewport(), &enter);
    QDragMoveEvent move(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(list->viewport(), &move);
    QDropEvent dropped(QPointF(at), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(list->viewport(), &dropped);
}

void BM_DropFiftySoundFilesOnTheLoopList(benchmark::State& state) {
    QTemporaryDir dir;
    QMimeData data;
    QList<QUrl> urls;
    for (const QString& path : writeSounds(dir, QStringLiteral("Drop"), 50)) urls << QUrl::fromLocalFile(path);
    data.setUrls(urls);
    for (auto _ : state) {
        state.PauseTiming();
        app::gCurrentWorld->resetToInitialState();
        app::gWorldEditorWindow->startEditing();
        QCoreApplication::processEvents();
        state.ResumeTiming();
        dropOnBackground(loopList(), data);
        QCoreApplication::processEvents();  // the rows painted
        if (loopList()->model()->rowCount() != 50) state.SkipWithError("the drop did not show 50 rows");
    }
}
BENCHMARK(BM_DropFiftySoundFilesOnTheLoopList)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_OpenTheEditorOnAFullWorld(benchmark::State& state) {
    QTemporaryDir dir;
    World& world = *app::gCurrentWorld;
    world.resetToInitialState();
    for (const QString& path : writeSounds(dir, QStringLiteral("Loop"), 50)) world.addLoopSound(*test::WorldFixture::aliasOf(path));
    const QStringList environment = writeSounds(dir, QStringLiteral("Environment"), 50);
    for (int i = 0; i < 5; ++i) world.addGroup(QString());
    for (int i = 0; i < environment.size(); ++i) {
        const SoundID id = world.addEnvironmentSound(*test::WorldFixture::aliasOf(environment[i]));
        world.setEnvironmentSoundGroupID(id, i % 2 == 0 ? world.getIndGroupID(i % 5) : 0);
    }
    for (auto _ : state) {
        state.PauseTiming();
        app::gWorldEditorWindow->hide();
        QCoreApplication::processEvents();
        state.ResumeTiming();
        app::gWorldEditorWindow->startEditing();
        QCoreApplication::processEvents();
    }
    if (loopList()->model()->rowCount() != 50) state.SkipWithError("the loop list does not show 50 rows");
}
BENCHMARK(BM_OpenTheEditorOnAFullWorld)->Unit(benchmark::kMillisecond)->Iterations(10);

// One position of a dragged loop-volume slider with the world playing: the handler, the world's
// setter and the volume handed to the playing instances. A mouse reports about 60 positions a
// second while dragging, so 60 times this is the editor's share of a core during a drag.
void BM_DragTheLoopVolumeSlider(benchmark::State& state) {
    QTemporaryDir dir;
    World& world = *app::gCurrentWorld;
    world.resetToInitialState();
    for (const QString& path : writeSounds(dir, QStringLiteral("Bed"), 10)) world.addLoopSound(*test::WorldFixture::aliasOf(path));
    app::gWorldEditorWindow->startEditing();
    QCoreApplication::processEvents();
    auto* slider = qobject_cast<QSlider*>(app::gWorldEditorWindow->myGetControlByID(app::fourCharCode("WET1"), 8));
    slider->setSliderDown(true);
    int value = 0;
    for (auto _ : state) {
        slider->setSliderPosition(value);
        value = (value + 7) % 101;
    }
    slider->setSliderDown(false);
}
BENCHMARK(BM_DragTheLoopVolumeSlider)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
    QTemporaryDir config;
    qputenv("XDG_CONFIG_HOME", config.path().toUtf8());
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Sylvora"));
    QApplication::setApplicationName(QStringLiteral("Sylvora"));
    sylvora::app::startUp(sylvora::app::StartUpOptions{.audioDevice = false, .tray = false});
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    sylvora::app::shutDown();
    return 0;
}
