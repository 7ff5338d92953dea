// The two sound lists: what each row shows and where it sorts, what a selection is, and how the
// controls beside a list follow its selection.

#include <QAbstractItemDelegate>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QSlider>

#include "app/editor/editorsoundlist.h"
#include "app/editor/environmentsoundmodel.h"
#include "app/editor/loopsoundmodel.h"
#include "app/editor/namecomparison.h"
#include "app/editor/worldeditorwindow.h"
#include "app/shell/globals.h"
#include "app/windows/textchangenotifier.h"

namespace sylvora::app {

namespace {
int wholePercent(double volume) { return static_cast<int>(volume * 100.0); }
}  // namespace

void WorldEditorWindow::wireLists() {
    loopModel = new LoopSoundModel(window);
    environmentModel = new EnvironmentSoundModel(window);
    const std::pair<EditorSoundList*, EditorListModel*> lists[] = {{c.loopList, loopModel},
                                                                  {c.environmentList, environmentModel}};
    for (auto [list, model] : lists) {
        model->setComparator([list](ItemID a, ItemID b) { return DBSortComparatorCallback(*list, a, b); });
        list->setModel(model);
        list->acceptDrag = [this, list](const QMimeData& drag, ItemID item) { return DBAcceptDragCallback(*list, drag, item); };
        list->receiveDrag = [this, list](const QMimeData& drag, ItemID item) { return DBReceiveDragCallback(*list, drag, item); };
        QObject::connect(list, &QAbstractItemView::doubleClicked, window, [this, list](const QModelIndex& index) {
            itemDoubleClicked(*list, list->listModel()->itemOf(index));
        });
        QObject::connect(list->selectionModel(), &QItemSelectionModel::selectionChanged, window,
                         [this, list] { selectionChanged(*list); });
        // The end of an in-place edit puts the whole list in order again.
        QObject::connect(list, &EditorSoundList::editingEnded, window, [model] { model->sort(); });
    }
    c.loopList->setRootIsDecorated(false);
    c.loopList->setDragEnabled(false);
    c.environmentList->setDragEnabled(true);
    c.environmentList->addDragItems = [this](const std::vector<ItemID>& items) {
        return DBAddDragItemCallback(*c.environmentList, items);
    };
    QObject::connect(c.environmentList, &QTreeView::expanded, window,
                     [this](const QModelIndex& index) { containerOpened(environmentModel->itemOf(index)); });
    QObject::connect(c.environmentList, &QTreeView::collapsed, window,
                     [this](const QModelIndex& index) { environmentModel->closeContainer(environmentModel->itemOf(index)); });
}

bool WorldEditorWindow::DBSortComparatorCallback(const EditorSoundList& list, ItemID first, ItemID second) {
    const bool loopList = myGetControlID(&list) == 3 && list.property("signature").toString() == QLatin1String("WET1");
    auto nameOf = [&](ItemID item) {
        if (loopList) return gCurrentWorld->getLoopSoundFilename(item);
        if (gCurrentWorld->getGroupIndex(item) >= 0) return gCurrentWorld->getGroupName(item);
        return gCurrentWorld->getEnvironmentSoundFilename(item);
    };
    const QString a = nameOf(first);
    const QString b = nameOf(second);
    if (a.isNull()) return true;
    if (b.isNull()) return false;
    const int order = compareNamesNumerically(a, b);
    if (order != 0) return order < 0;
    return first < second;  // equal names keep the order in which the world made them
}

// ---- Selections ----

SoundID WorldEditorWindow::getSelectedLoopingSoundID() const { return c.loopList->firstSelectedItem(); }

ItemID WorldEditorWindow::getSelectedEnvironmentItemID() const { return c.environmentList->firstSelectedItem(); }

GroupID WorldEditorWindow::getSelectedEnvironmentGroupID() const {
    const ItemID item = getSelectedEnvironmentItemID();
    if (item == 0) return 0;
    if (gCurrentWorld->getGroupIndex(item) >= 0) return item;
    return gCurrentWorld->getEnvironmentSoundGroupID(item);
}

SoundID WorldEditorWindow::getSelectedEnvironmentSoundID() const {
    const ItemID item = getSelectedEnvironmentItemID();
    return gCurrentWorld->getEnvironmentSoundIndex(item) >= 0 ? item : 0;
}

// ---- Notifications ----

void WorldEditorWindow::itemDoubleClicked(EditorSoundList& list, ItemID item) {
    if (item == 0) return;
    if (&list == c.environmentList && gCurrentWorld->getGroupIndex(item) >= 0) {
        list.editItem(item);
        return;
    }
    if (item == previewSoundID) killSound();
    else playSound(&list == c.loopList, item);
}

void WorldEditorWindow::containerOpened(GroupID group) {
    environmentModel->openContainer(group);
    for (int i = 0; i < gCurrentWorld->getNumEnvironmentSounds(); ++i) {
        const SoundID sound = gCurrentWorld->getIndEnvironmentSoundID(i);
        if (gCurrentWorld->getEnvironmentSoundGroupID(sound) == group) environmentModel->addItems(group, {sound});
    }
}

void WorldEditorWindow::selectionChanged(EditorSoundList& list) {
    if (&list == c.loopList) {
        updateDisplayedInfoForSelectedLoopingSound();
        c.removeLoopButton->setEnabled(getSelectedLoopingSoundID() != 0);
    } else {
        updateDisplayedInfoForSelectedEnvironmentSound();
        c.removeEnvironmentButton->setEnabled(getSelectedEnvironmentItemID() != 0);
    }
}

// ---- Displays ----

void WorldEditorWindow::updateDisplayedInfoForSelectedLoopingSound() {
    const QScopedValueRollback showing(showingSelection, true);
    const SoundID sound = getSelectedLoopingSoundID();
    if (sound != 0) {
        c.loopVolumeBox->setEnabled(true);
        const int percent = wholePercent(gCurrentWorld->getLoopSoundVolume(sound));
        c.loopVolume->setProperty("reference", percent);
        c.loopVolume->setValue(percent);
    } else {
        c.loopVolumeBox->setEnabled(false);
        c.loopVolume->setValue(100);
    }
}

void WorldEditorWindow::updateDisplayedInfoForSelectedEnvironmentSound() {
    const QScopedValueRollback showing(showingSelection, true);
    const GroupID group = getSelectedEnvironmentGroupID();
    const SoundID sound = getSelectedEnvironmentSoundID();
    if (group == 0 && sound == 0) {
        c.volumeBox->setEnabled(false);
        c.intervalBox->setEnabled(false);
        c.minVolume->setValue(100);
        c.maxVolume->setValue(100);
        c.minInterval->setValue(c.minInterval->minimum());
        c.maxInterval->setValue(c.maxInterval->minimum());
        TextChangeNotifier::setTextWithoutNotice(c.minIntervalField, QString());
        TextChangeNotifier::setTextWithoutNotice(c.maxIntervalField, QString());
        return;
    }
    QObject::disconnect(minIntervalSliderHandler);
    QObject::disconnect(maxIntervalSliderHandler);
    int minInterval = 0;
    int maxInterval = 0;
    if (sound != 0) {
        c.volumeBox->setEnabled(true);
        const int minPercent = wholePercent(gCurrentWorld->getEnvironmentSoundMinVolume(sound));
        c.minVolume->setProperty("reference", minPercent);
        c.minVolume->setValue(minPercent);
        const int maxPercent = wholePercent(gCurrentWorld->getEnvironmentSoundMaxVolume(sound));
        c.maxVolume->setProperty("reference", maxPercent);
        c.maxVolume->setValue(maxPercent);
        // A grouped sound waits as its group does; the wait is changed on the group.
        c.intervalBox->setEnabled(group == 0);
        minInterval = group != 0 ? gCurrentWorld->getGroupMinInterval(group) : gCurrentWorld->getEnvironmentSoundMinInterval(sound);
        maxInterval = group != 0 ? gCurrentWorld->getGroupMaxInterval(group) : gCurrentWorld->getEnvironmentSoundMaxInterval(sound);
    } else {
        c.volumeBox->setEnabled(false);
        c.intervalBox->setEnabled(true);
        c.minVolume->setValue(100);
        c.maxVolume->setValue(100);
        minInterval = gCurrentWorld->getGroupMinInterval(group);
        maxInterval = gCurrentWorld->getGroupMaxInterval(group);
    }
    c.minInterval->setProperty("reference", minInterval);
    c.minInterval->setValue(minInterval);
    syncEditTextWithSlider(c.minInterval, c.minIntervalField);
    c.maxInterval->setProperty("reference", maxInterval);
    c.maxInterval->setValue(maxInterval);
    syncEditTextWithSlider(c.maxInterval, c.maxIntervalField);
    minIntervalSliderHandler = attachSliderHandler(c.minInterval);
    maxIntervalSliderHandler = attachSliderHandler(c.maxInterval);
}

}  // namespace sylvora::app
