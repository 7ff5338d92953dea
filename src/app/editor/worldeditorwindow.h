#pragma once

// The window in which a person builds or changes the current world while it plays. It holds no
// copy of the world: every change is written into the World at once through its own operations
// (which also repair a playing schedule), and every display is read back from the World.
//
// Four tabs: loop sounds, environment sounds (groups and their sounds), picture, info. Sounds come
// in by the choose-file dialog or by dropping files on a list; a double-click previews one sound
// beside the world's playback.
//
// Split by concern: worldeditorwindow.cpp (build, show, hide, tabs, commands),
// worldeditor_lists.cpp (selection and what follows it), worldeditor_values.cpp (sliders and
// number fields), worldeditor_files.cpp (dialogs and the picture), worldeditor_drops.cpp (drag and
// drop), worldeditor_preview.cpp (the sound preview).
//
// Lifecycle: constructed once at start-up, hidden -> startEditing() shows it on the current world,
// any number of times -> hide() empties the lists -> destroyed at shut-down. Main thread only.

#include <QMetaObject>
#include <QPointer>
#include <memory>
#include <vector>

#include "app/editor/editorlistmodel.h"
#include "app/shell/commanddispatch.h"
#include "app/windows/mycarbonwindow.h"
#include "core/time/eventloop.h"
#include "core/world/world.h"

class QFileDialog;
class QLabel;
class QLineEdit;
class QMimeData;
class QObject;
class QPlainTextEdit;
class QPushButton;
class QSlider;
class QTabWidget;
class QTimer;
class QWidget;

namespace sylvora::audio {
class SoundInstance;
}

namespace sylvora::app {

class EditorSoundList;
class EnvironmentSoundModel;
class LoopSoundModel;
class PictureWell;

class WorldEditorWindow : public MyCarbonWindow {
public:
    enum WorldEditorTabs { LOOP_SOUNDS_TAB = 1, ENVIRONMENT_SOUNDS_TAB = 2, PICTURE_TAB = 3, INFO_TAB = 4 };

    static constexpr CommandID ADLS = fourCharCode("ADLS");
    static constexpr CommandID ADES = fourCharCode("ADES");
    static constexpr CommandID RMLS = fourCharCode("RMLS");
    static constexpr CommandID RMES = fourCharCode("RMES");
    static constexpr CommandID FLDR = fourCharCode("FLDR");
    static constexpr CommandID SELP = fourCharCode("SELP");
    static constexpr CommandID HELP = fourCharCode("HELP");
    static constexpr CommandID LSDB = fourCharCode("LSDB");  // the loop list's column
    static constexpr CommandID ESDB = fourCharCode("ESDB");  // the environment list's column

    static constexpr double UPDATE_SLIDERS_AFTER_TYPING_DELAY = 0.5;
    static constexpr double MOVIES_TASK_TIMER_DELAY = 1.0 / 15.0;

    WorldEditorWindow();
    ~WorldEditorWindow() override;

    // Window, tabs and commands.
    void startEditing();
    void show() override;
    void hide() override;
    void showTab(WorldEditorTabs tab);
    bool handleHICommand(const HICommand& command);
    OSStatus handleCommand(CommandID command) override;
    void handleTextChanged(QWidget* control) override;

    // Lists.
    SoundID getSelectedLoopingSoundID() const;
    ItemID getSelectedEnvironmentItemID() const;
    GroupID getSelectedEnvironmentGroupID() const;
    SoundID getSelectedEnvironmentSoundID() const;
    void updateDisplayedInfoForSelectedLoopingSound();
    void updateDisplayedInfoForSelectedEnvironmentSound();
    // True when the first item sorts before the second in `list`.
    static bool DBSortComparatorCallback(const EditorSoundList& list, ItemID first, ItemID second);

    // Value controls.
    void syncEditTextWithSlider(QSlider* slider, QLineEdit* field);
    void liveSliderEventHandler(QSlider* slider);
    void handleEditTextChanged(QWidget* field);
    void updateSlidersAfterTypingTimer(QSlider* slider);

    // Files, drops and the picture.
    static bool isAcceptableSoundFile(const FSRef& file);
    static bool isAcceptablePictureFile(const FSRef& file);
    void promptForSoundFiles();
    void promptForPictureFile();
    QFileDialog* openDialog() const;  // the choose-file dialog that is up, or null
    void updatePicture();
    bool DBAcceptDragCallback(const EditorSoundList& list, const QMimeData& drag, ItemID item) const;
    bool DBReceiveDragCallback(EditorSoundList& list, const QMimeData& drag, ItemID item);
    QMimeData* DBAddDragItemCallback(const EditorSoundList& list, const std::vector<ItemID>& items) const;
    bool receivePictureDrop(const QMimeData& drag);

    // Preview.
    OSStatus playSound(bool isLoopSound, SoundID id);
    void killSound();
    void moviesTaskTimer();
    SoundID getPreviewSoundID() const { return previewSoundID; }
    const audio::SoundInstance* getPreviewMovie() const { return previewMovie.get(); }

private:
    // The window's controls, found once by their two-part IDs.
    struct Controls {
        QTabWidget* tabs = nullptr;
        EditorSoundList* loopList = nullptr;
        QPushButton* removeLoopButton = nullptr;
        QWidget* loopVolumeBox = nullptr;
        QSlider* loopVolume = nullptr;
        QSlider* crossfade = nullptr;
        QLineEdit* crossfadeField = nullptr;
        EditorSoundList* environmentList = nullptr;
        QPushButton* removeEnvironmentButton = nullptr;
        QWidget* volumeBox = nullptr;
        QSlider* minVolume = nullptr;
        QSlider* maxVolume = nullptr;
        QWidget* intervalBox = nullptr;
        QSlider* minInterval = nullptr;
        QLineEdit* minIntervalField = nullptr;
        QSlider* maxInterval = nullptr;
        QLineEdit* maxIntervalField = nullptr;
        PictureWell* pictureWell = nullptr;
        QLabel* pictureName = nullptr;
        QLineEdit* nameField = nullptr;
        QLineEdit* authorField = nullptr;
        QPlainTextEdit* descriptionField = nullptr;
    };

    static CommandID codeFromText(const QString& text);  // "WET1" -> its four-character code
    void findControls();
    void wireLists();
    void wireButtons();
    void wireSliders();
    QMetaObject::Connection attachSliderHandler(QSlider* slider);
    void onTabChanged(int index);
    void removeSelectedLoopSounds();
    void removeSelectedEnvironmentItems();
    void newGroup();
    void itemDoubleClicked(EditorSoundList& list, ItemID item);
    void containerOpened(GroupID group);
    void selectionChanged(EditorSoundList& list);
    void addCollected(EditorSoundList& list, ItemID container, const std::vector<ItemID>& ids);
    void chooseFiles(const QStringList& files);
    void setIntervalOfTarget(bool maximum, int value);
    void updateGetInfoWindow();

    Controls c;
    LoopSoundModel* loopModel = nullptr;
    EnvironmentSoundModel* environmentModel = nullptr;
    QObject* mouseWatcher = nullptr;
    bool changingTab = false;
    bool showingSelection = false;  // the sliders show a selection's values: nothing is written back

    QMetaObject::Connection crossfadeSliderHandler;
    QMetaObject::Connection minIntervalSliderHandler;
    QMetaObject::Connection maxIntervalSliderHandler;
    QTimer* minIntervalTypingTimer = nullptr;
    QTimer* maxIntervalTypingTimer = nullptr;
    QPointer<QFileDialog> navDialog;
    std::unique_ptr<audio::SoundInstance> previewMovie;
    EventLoopTimerRef previewTimer = nullptr;
    SoundID previewSoundID = 0;
};

}  // namespace sylvora::app
