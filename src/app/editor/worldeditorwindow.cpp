#include "app/editor/worldeditorwindow.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QShortcut>
#include <QSlider>
#include <QTabWidget>
#include <QTimer>
#include <utility>

#include "app/editor/editorsoundlist.h"
#include "app/editor/environmentsoundmodel.h"
#include "app/editor/loopsoundmodel.h"
#include "app/editor/picturewell.h"
#include "app/info/getinfowindow.h"
#include "app/shell/globals.h"
#include "app/shell/helpbook.h"
#include "app/shell/menus.h"
#include "app/shell/shellevents.h"
#include "app/shell/startup.h"
#include "app/windows/textchangenotifier.h"
#include "audio/engine/engine.h"
#include "audio/engine/soundinstance.h"
#include "core/platform/beep.h"
#include "core/strings/stringresources.h"

namespace sylvora::app {

namespace {
constexpr CommandID WERT = fourCharCode("WERT");
constexpr CommandID WET1 = fourCharCode("WET1");
constexpr CommandID WET2 = fourCharCode("WET2");
constexpr CommandID WET3 = fourCharCode("WET3");
constexpr CommandID WET4 = fourCharCode("WET4");

// A mouse press anywhere in the window outside the environment list ends the editing of a group's
// name there, committing it before the click reaches its target (a slider, a field, the tab bar).
class EditCommitter : public QObject {
public:
    EditCommitter(QWidget* window, EditorSoundList* list) : QObject(window), window_(window), list_(list) {}

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::MouseButtonPress || list_->editItemID() == 0) return false;
        auto* widget = qobject_cast<QWidget*>(watched);
        if (widget == nullptr || widget->window() != window_) return false;
        if (widget == list_ || list_->isAncestorOf(widget)) return false;
        list_->commitEditing();
        return false;
    }

private:
    QWidget* window_;
    EditorSoundList* list_;
};
}  // namespace

// ---- Build ----

WorldEditorWindow::WorldEditorWindow() : MyCarbonWindow(QStringLiteral("WorldEditorWindow")) {
    if (window == nullptr) return;
    attachMenuBar(*window);
    findControls();
    wireLists();
    c.pictureWell->receiveDrop = [this](const QMimeData& drag) { return receivePictureDrop(drag); };

    for (QSlider* slider : {c.minInterval, c.maxInterval}) {
        auto* timer = new QTimer(window);
        timer->setSingleShot(true);
        timer->setInterval(static_cast<int>(UPDATE_SLIDERS_AFTER_TYPING_DELAY * 1000));
        QObject::connect(timer, &QTimer::timeout, window, [this, slider] { updateSlidersAfterTypingTimer(slider); });
        (slider == c.minInterval ? minIntervalTypingTimer : maxIntervalTypingTimer) = timer;
    }
    for (QWidget* field : std::initializer_list<QWidget*>{c.crossfadeField, c.minIntervalField, c.maxIntervalField,
                                                          c.nameField, c.authorField, c.descriptionField}) {
        TextChangeNotifier::installTextChangeNotifier(field);
    }
    wireSliders();
    wireButtons();
    // Delete and Backspace on a list do what its Remove button does (not while a name is edited:
    // the field in the list has the focus then).
    using ListCommand = std::pair<QWidget*, CommandID>;
    for (const auto& [list, remove] : {ListCommand{c.loopList, RMLS}, ListCommand{c.environmentList, RMES}}) {
        for (const Qt::Key key : {Qt::Key_Delete, Qt::Key_Backspace}) {
            auto* shortcut = new QShortcut(QKeySequence(key), list);
            shortcut->setContext(Qt::WidgetShortcut);
            QObject::connect(shortcut, &QShortcut::activated, window, [this, remove] {
                handleCommand(remove);
                ShellEvents::instance().notifyStateChanged();
            });
        }
    }
    // From each minimum to its maximum, as a person compares them.
    QWidget::setTabOrder(c.minVolume, c.maxVolume);
    QWidget::setTabOrder(c.minIntervalField, c.maxIntervalField);
    showTab(LOOP_SOUNDS_TAB);
    QObject::connect(c.tabs, &QTabWidget::currentChanged, window, [this](int index) { onTabChanged(index); });
    // A click on the tab already shown changes nothing Qt reports, and is still a hit on the tabs.
    QObject::connect(c.tabs, &QTabWidget::tabBarClicked, window, [this](int index) {
        if (index >= 0 && index == c.tabs->currentIndex()) showTab(static_cast<WorldEditorTabs>(index + 1));
    });
    mouseWatcher = new EditCommitter(window, c.environmentList);
    qApp->installEventFilter(mouseWatcher);
    gCurrentWorld->setPreviewStopper([this] { killSound(); });
}

WorldEditorWindow::~WorldEditorWindow() {
    if (window == nullptr) return;
    qApp->removeEventFilter(mouseWatcher);
    c.loopList->acceptDrag = c.loopList->receiveDrag = nullptr;
    c.environmentList->acceptDrag = c.environmentList->receiveDrag = nullptr;
    c.environmentList->addDragItems = nullptr;
    loopModel->removeAllItems();
    environmentModel->removeAllItems();
    c.pictureWell->setPicture(QImage());
    killSound();
    if (gCurrentWorld != nullptr) gCurrentWorld->setPreviewStopper({});
    if (navDialog) delete navDialog.data();
}

void WorldEditorWindow::findControls() {
    auto find = [this]<typename Control>(Control*& out, CommandID signature, int id) {
        out = qobject_cast<Control*>(myGetControlByID(signature, id));
        Q_ASSERT(out != nullptr);
    };
    find(c.tabs, WERT, 1);
    find(c.loopList, WET1, 3);
    find(c.removeLoopButton, WET1, 5);
    find(c.loopVolumeBox, WET1, 6);
    find(c.loopVolume, WET1, 8);
    find(c.crossfade, WET1, 14);
    find(c.crossfadeField, WET1, 15);
    find(c.environmentList, WET2, 3);
    find(c.removeEnvironmentButton, WET2, 5);
    find(c.volumeBox, WET2, 7);
    find(c.minVolume, WET2, 10);
    find(c.maxVolume, WET2, 15);
    find(c.intervalBox, WET2, 16);
    find(c.minInterval, WET2, 18);
    find(c.minIntervalField, WET2, 19);
    find(c.maxInterval, WET2, 22);
    find(c.maxIntervalField, WET2, 23);
    find(c.pictureWell, WET3, 2);
    find(c.pictureName, WET3, 3);
    find(c.nameField, WET4, 3);
    find(c.authorField, WET4, 5);
    find(c.descriptionField, WET4, 7);
}

void WorldEditorWindow::wireButtons() {
    // Each button carries its command; a click is a command of this window like a menu item's.
    for (QPushButton* button : window->findChildren<QPushButton*>()) {
        const CommandID command = codeFromText(button->property("command").toString());
        if (command == 0) continue;
        QObject::connect(button, &QPushButton::clicked, window, [this, command] {
            if (handleCommand(command) != noErr) dispatchCommand(command);
            ShellEvents::instance().notifyStateChanged();
        });
    }
}

CommandID WorldEditorWindow::codeFromText(const QString& text) {
    const QByteArray code = text.toLatin1();
    if (code.size() != 4) return 0;
    CommandID result = 0;
    for (char byte : code) result = (result << 8) | static_cast<unsigned char>(byte);
    return result;
}

// ---- Show and hide ----

void WorldEditorWindow::startEditing() {
    if (window == nullptr) return;
    World& world = *gCurrentWorld;

    QObject::disconnect(crossfadeSliderHandler);
    c.crossfade->setProperty("reference", world.getLoopSoundsCrossFadeDuration());
    c.crossfade->setValue(static_cast<std::int16_t>(world.getLoopSoundsCrossFadeDuration()));
    syncEditTextWithSlider(c.crossfade, c.crossfadeField);
    crossfadeSliderHandler = attachSliderHandler(c.crossfade);

    loopModel->removeAllItems();
    if (world.getNumLoopSounds() >= 1) {
        std::vector<ItemID> ids;
        for (int i = 0; i < world.getNumLoopSounds(); ++i) ids.push_back(world.getIndLoopSoundID(i));
        loopModel->addItems(0, ids);
        c.loopList->selectOnly(ids.front());
        c.removeLoopButton->setEnabled(true);
    } else {
        c.removeLoopButton->setEnabled(false);
    }
    updateDisplayedInfoForSelectedLoopingSound();

    // Groups start closed, so only the sounds of no group get rows now; a group's sounds come when
    // it is opened. The first sound of the world is selected when it has a row.
    environmentModel->removeAllItems();
    if (world.getNumGroups() > 0) {
        std::vector<ItemID> groups;
        for (int i = 0; i < world.getNumGroups(); ++i) groups.push_back(world.getIndGroupID(i));
        environmentModel->addItems(0, groups);
        c.environmentList->selectOnly(groups.front());
    }
    if (world.getNumEnvironmentSounds() > 0) {
        std::vector<ItemID> ungrouped;
        for (int i = 0; i < world.getNumEnvironmentSounds(); ++i) {
            const SoundID sound = world.getIndEnvironmentSoundID(i);
            if (world.getEnvironmentSoundGroupID(sound) == 0) ungrouped.push_back(sound);
        }
        environmentModel->addItems(0, ungrouped);
        c.environmentList->selectOnly(world.getIndEnvironmentSoundID(0));
    }
    c.removeEnvironmentButton->setEnabled(world.getNumGroups() > 0 || world.getNumEnvironmentSounds() > 0);
    updateDisplayedInfoForSelectedEnvironmentSound();

    TextChangeNotifier::setTextWithoutNotice(c.nameField, world.getName());
    TextChangeNotifier::setTextWithoutNotice(c.authorField, world.getAuthor());
    TextChangeNotifier::setTextWithoutNotice(c.descriptionField, world.getDescription());
    updatePicture();
    show();
}

void WorldEditorWindow::show() {
    gCurrentWorld->start();
    applicationEngine().setLowLatency(true);
    MyCarbonWindow::show();
}

void WorldEditorWindow::hide() {
    killSound();
    if (window != nullptr) {
        loopModel->removeAllItems();
        environmentModel->removeAllItems();
    }
    gCurrentWorld->start();
    applicationEngine().setLowLatency(false);
    MyCarbonWindow::hide();
}

// ---- Tabs ----

void WorldEditorWindow::showTab(WorldEditorTabs tab) {
    killSound();
    changingTab = true;
    c.tabs->setCurrentIndex(static_cast<int>(tab) - 1);
    changingTab = false;
    if (QWidget* focused = QApplication::focusWidget(); focused != nullptr && window->isAncestorOf(focused)) {
        focused->clearFocus();
    }
    switch (tab) {
        case LOOP_SOUNDS_TAB: c.loopList->setFocus(Qt::OtherFocusReason); break;
        case ENVIRONMENT_SOUNDS_TAB: c.environmentList->setFocus(Qt::OtherFocusReason); break;
        case INFO_TAB: c.nameField->setFocus(Qt::OtherFocusReason); break;
        case PICTURE_TAB: break;
    }
}

void WorldEditorWindow::onTabChanged(int index) {
    // A person's click or key on the tab bar: the control hit of the tab control.
    if (!changingTab) showTab(static_cast<WorldEditorTabs>(index + 1));
}

// ---- Commands ----

OSStatus WorldEditorWindow::handleCommand(CommandID command) {
    return handleHICommand(HICommand{0, command, 0}) ? noErr : eventNotHandledErr;
}

bool WorldEditorWindow::handleHICommand(const HICommand& command) {
    switch (command.commandID) {
        case ADLS:
        case ADES: promptForSoundFiles(); return true;
        case RMLS: removeSelectedLoopSounds(); return true;
        case RMES: removeSelectedEnvironmentItems(); return true;
        case FLDR: newGroup(); return true;
        case SELP: promptForPictureFile(); return true;
        case HELP:
            myGotoHelpPage(copyLocalizedString(HELP_PAGE_CREATING_A_WORLD_KEY, MISC_STRINGS_FILE), QString());
            return true;
        default: return false;
    }
}

void WorldEditorWindow::removeSelectedLoopSounds() {
    const std::vector<ItemID> ids = c.loopList->selectedItems();
    for (ItemID id : ids) gCurrentWorld->removeLoopSound(id);
    if (std::find(ids.begin(), ids.end(), previewSoundID) != ids.end()) killSound();
    myRemoveSelectedDataBrowserItems(*c.loopList);
}

void WorldEditorWindow::removeSelectedEnvironmentItems() {
    const std::vector<ItemID> ids = c.environmentList->selectedItems();
    for (ItemID id : ids) {
        if (gCurrentWorld->getGroupIndex(id) >= 0) gCurrentWorld->removeGroup(id);
        else gCurrentWorld->removeEnvironmentSound(id);
    }
    if (std::find(ids.begin(), ids.end(), previewSoundID) != ids.end()) killSound();
    myRemoveSelectedDataBrowserItems(*c.environmentList);
}

void WorldEditorWindow::newGroup() {
    const GroupID group = gCurrentWorld->addGroup(QString());
    if (group == 0) {
        SysBeep(1);
        return;
    }
    environmentModel->addItems(0, {group});
    c.environmentList->selectOnly(group);
    c.environmentList->editItem(group);
}

void WorldEditorWindow::updateGetInfoWindow() {
    if (gGetInfoWindow != nullptr && gGetInfoWindow->isVisible()) gGetInfoWindow->updateDisplay();
}

}  // namespace sylvora::app
