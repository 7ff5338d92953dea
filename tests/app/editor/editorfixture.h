#pragma once

// The editor open on the current world in a started application, with sound and picture files
// written into the test's folder, and the drags a file manager or the editor's own list would make.

#include <QLineEdit>
#include <QMimeData>
#include <QSlider>
#include <QStringList>
#include <memory>

#include "app/editor/editorsoundlist.h"
#include "app/editor/worldeditorwindow.h"
#include "app/support/appfixture.h"
#include "core/world/world.h"
#include "support/worldfixture.h"

namespace sylvora::test {

using app::ItemID;

class EditorTest : public AppTest {
protected:
    EditorTest();
    ~EditorTest() override;

    app::WorldEditorWindow& editor() const;
    World& world() const;
    template <typename Control>
    Control* control(const char (&signature)[5], int id) const {
        return qobject_cast<Control*>(editor().myGetControlByID(app::fourCharCode(signature), id));
    }
    // Whether the control is on (false when there is no such control).
    bool enabled(const char (&signature)[5], int id) const;
    app::EditorSoundList* loopList() const { return control<app::EditorSoundList>("WET1", 3); }
    app::EditorSoundList* environmentList() const { return control<app::EditorSoundList>("WET2", 3); }
    QSlider* slider(const char (&signature)[5], int id) const { return control<QSlider>(signature, id); }
    QLineEdit* field(const char (&signature)[5], int id) const { return control<QLineEdit>(signature, id); }

    // A short sound file `name` in the test's sound folder; its path.
    QString sound(const QString& name, double seconds = 0.3);
    QString picture(const QString& name, int width = 40, int height = 30);

    // Clicks the button that carries `command`, as a person would.
    void clickCommand(const char (&command)[5]);
    // Chooses `files` (all in one folder) in the choose-file dialog that is up.
    void chooseInDialog(const QStringList& files);

    static std::unique_ptr<QMimeData> filesDrag(const QStringList& paths);
    // Sends enter, move and drop at `position` of the list's viewport (or the widget itself);
    // returns whether the drop was accepted.
    static bool drop(QWidget* target, const QMimeData& data, QPoint position);
    static QPoint rowPosition(const app::EditorSoundList* list, ItemID item);
    static QPoint background(const app::EditorSoundList* list);
    void select(app::EditorSoundList* list, ItemID item) const { list->selectOnly(item); }

    // Names shown by `list`, in display order.
    static QStringList shownNames(const app::EditorSoundList* list);
    // Scheduled plays (start time set) of one sound, or of all members of a group.
    int scheduledPlays(ItemID soundOrGroup) const;

    int beeps = 0;
};

}  // namespace sylvora::test
