#include "editorfixture.h"

#include <QApplication>
#include <QDir>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QImage>
#include <QLineEdit>
#include <QPushButton>
#include <QUrl>

#include "app/shell/globals.h"
#include "core/platform/beep.h"
#include "support/soundfiles.h"

namespace sylvora::test {

EditorTest::EditorTest() {
    setSysBeepHook([this] { ++beeps; });
    dir.makeDir(QStringLiteral("sounds"));
    app::gWorldEditorWindow->startEditing();
}

EditorTest::~EditorTest() { setSysBeepHook({}); }

app::WorldEditorWindow& EditorTest::editor() const { return *app::gWorldEditorWindow; }
World& EditorTest::world() const { return *app::gCurrentWorld; }

bool EditorTest::enabled(const char (&signature)[5], int id) const {
    const QWidget* widget = editor().myGetControlByID(app::fourCharCode(signature), id);
    EXPECT_NE(widget, nullptr);
    return widget != nullptr && widget->isEnabled();
}

QString EditorTest::sound(const QString& name, double seconds) {
    const QString path = dir.filePath(QStringLiteral("sounds/") + name);
    ToneSpec tone;
    tone.seconds = seconds;
    tone.sampleRate = 22050;
    EXPECT_TRUE(writeSoundFile(path, tone));
    return path;
}

QString EditorTest::picture(const QString& name, int width, int height) {
    const QString path = dir.filePath(name);
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::darkGreen);
    EXPECT_TRUE(image.save(path));
    return path;
}

void EditorTest::clickCommand(const char (&command)[5]) {
    for (QPushButton* button : editor().getWindow()->findChildren<QPushButton*>()) {
        if (button->property("command").toString() == QLatin1String(command)) {
            button->click();
            return;
        }
    }
    ADD_FAILURE() << "no button sends " << command;
}

void EditorTest::chooseInDialog(const QStringList& files) {
    QFileDialog* dialog = editor().openDialog();
    ASSERT_NE(dialog, nullptr);
    ASSERT_TRUE(dialog->isVisible());
    dialog->setDirectory(QFileInfo(files.front()).absolutePath());
    QStringList quoted;
    for (const QString& file : files) quoted << QLatin1Char('"') + QFileInfo(file).fileName() + QLatin1Char('"');
    auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    ASSERT_NE(name, nullptr);
    name->setText(files.size() == 1 ? QFileInfo(files.front()).fileName() : quoted.join(QLatin1Char(' ')));
    QMetaObject::invokeMethod(dialog, "accept");
    ASSERT_TRUE(processEventsUntil([this] { return editor().openDialog() == nullptr; }));
}

std::unique_ptr<QMimeData> EditorTest::filesDrag(const QStringList& paths) {
    auto data = std::make_unique<QMimeData>();
    QList<QUrl> urls;
    for (const QString& path : paths) urls << (path.contains(QLatin1String("://")) ? QUrl(path) : QUrl::fromLocalFile(path));
    data->setUrls(urls);
    return data;
}

bool EditorTest::drop(QWidget* target, const QMimeData& data, QPoint position) {
    if (auto* list = qobject_cast<QAbstractItemView*>(target)) target = list->viewport();
    QDragEnterEvent enter(position, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &enter);
    if (!enter.isAccepted()) return false;
    QDragMoveEvent move(position, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &move);
    if (!move.isAccepted()) return false;
    QDropEvent dropped(QPointF(position), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &dropped);
    return dropped.isAccepted();
}

QPoint EditorTest::rowPosition(const app::EditorSoundList* list, ItemID item) {
    return list->visualRect(list->listModel()->indexOf(item)).center();
}

QPoint EditorTest::background(const app::EditorSoundList* list) {
    return QPoint(10, list->viewport()->height() - 5);
}

QStringList EditorTest::shownNames(const app::EditorSoundList* list) {
    QStringList names;
    for (QModelIndex row = list->model()->index(0, 0); row.isValid(); row = list->indexBelow(row)) {
        names << row.data().toString();
    }
    return names;
}

int EditorTest::scheduledPlays(ItemID soundOrGroup) const {
    int count = 0;
    for (int i = 0; i < world().getNumMovies(); ++i) {
        const MovieEntry& entry = world().getMovieEntry(i);
        if (entry.isLoopSound || entry.startTime <= 0) continue;
        if (entry.soundID == soundOrGroup || world().getEnvironmentSoundGroupID(entry.soundID) == soundOrGroup) ++count;
    }
    return count;
}

}  // namespace sylvora::test
