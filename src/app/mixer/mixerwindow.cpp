#include "app/mixer/mixerwindow.h"

#include <QHeaderView>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>
#include <QTreeView>

#include "app/editor/worldeditorwindow.h"
#include "app/mixer/mixermodel.h"
#include "app/shell/globals.h"
#include "app/shell/menus.h"
#include "app/shell/shellevents.h"
#include "app/shell/startup.h"
#include "audio/engine/engine.h"

namespace sylvora::app {

namespace {
constexpr int SLIDER_COLUMN_WIDTH = 160;
}  // namespace

MixerWindow::MixerWindow() : MyCarbonWindow(QStringLiteral("MixerWindow")) {
    if (window == nullptr) return;
    attachMenuBar(*window);
    soundTree = qobject_cast<QTreeView*>(myGetControlByID(CONTROLS_SIGNATURE, SOUND_TREE_ID));
    emptyLabel = qobject_cast<QLabel*>(myGetControlByID(CONTROLS_SIGNATURE, EMPTY_LABEL_ID));
    model = new MixerModel(*gCurrentWorld, window);
    if (soundTree != nullptr) {
        soundTree->setModel(model);
        soundTree->header()->setStretchLastSection(false);
        soundTree->header()->setSectionResizeMode(MixerModel::NAME_COLUMN, QHeaderView::Stretch);
        soundTree->header()->setSectionResizeMode(MixerModel::LEVEL_COLUMN, QHeaderView::Fixed);
        soundTree->header()->resizeSection(MixerModel::LEVEL_COLUMN, SLIDER_COLUMN_WIDTH);
        soundTree->header()->setSectionResizeMode(MixerModel::SOUNDING_COLUMN, QHeaderView::ResizeToContents);
    }
    QObject::connect(model, &QAbstractItemModel::modelReset, window, [this] { modelReset(); });
    QObject::connect(model, &QAbstractItemModel::dataChanged, window,
                     [this](const QModelIndex& topLeft, const QModelIndex& bottomRight) { levelChanged(topLeft, bottomRight); });
    refreshTimer.setInterval(REFRESH_INTERVAL_MS);
    QObject::connect(&refreshTimer, &QTimer::timeout, window, [this] { updateDisplay(); });
    QObject::connect(&ShellEvents::instance(), &ShellEvents::stateChanged, window, [this] {
        if (isVisible()) updateDisplay();
    });
    modelReset();
}

MixerWindow::~MixerWindow() { refreshTimer.stop(); }

void MixerWindow::show() {
    updateDisplay();
    refreshTimer.start();
    MyCarbonWindow::show();
}

void MixerWindow::hide() {
    refreshTimer.stop();
    MyCarbonWindow::hide();
}

void MixerWindow::updateDisplay() {
    if (window == nullptr) return;
    model->refresh();
    window->setWindowTitle(worldWindowTitle(gCurrentWorld->getName(), QObject::tr("Mixer")));
}

QSlider* MixerWindow::sliderFor(SoundID id) const {
    if (soundTree == nullptr) return nullptr;
    return qobject_cast<QSlider*>(soundTree->indexWidget(model->indexOfSound(id, MixerModel::LEVEL_COLUMN)));
}

void MixerWindow::modelReset() {
    if (soundTree == nullptr) return;
    addSliders(QModelIndex());
    soundTree->expandAll();
    const bool empty = gCurrentWorld->getNumLoopSounds() == 0 && gCurrentWorld->getNumEnvironmentSounds() == 0;
    soundTree->setVisible(!empty);
    if (emptyLabel != nullptr) emptyLabel->setVisible(empty);
}

void MixerWindow::addSliders(const QModelIndex& parent) {
    for (int row = 0; row < model->rowCount(parent); ++row) {
        const QModelIndex name = model->index(row, MixerModel::NAME_COLUMN, parent);
        addSliders(name);
        if (!model->hasLevel(name)) continue;
        const QModelIndex level = model->index(row, MixerModel::LEVEL_COLUMN, parent);
        auto* slider = new QSlider(Qt::Horizontal);
        slider->setRange(0, MixerModel::LEVEL_STEPS);
        slider->setValue(level.data(Qt::EditRole).toInt());
        slider->setAccessibleName(name.data().toString());
        const QPersistentModelIndex target(level);
        QObject::connect(slider, &QSlider::valueChanged, slider, [this, target](int value) {
            model->setData(target, value);
        });
        // While the pointer is down a person listens for each step, as in the editor.
        QObject::connect(slider, &QSlider::sliderPressed, slider, [] { applicationEngine().setLowLatency(true); });
        QObject::connect(slider, &QSlider::sliderReleased, slider,
                         [] { applicationEngine().setLowLatency(gWorldEditorWindow->isVisible()); });
        soundTree->setIndexWidget(level, slider);
    }
}

void MixerWindow::levelChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight) {
    if (soundTree == nullptr) return;
    const QModelIndex parent = topLeft.parent();
    for (int row = topLeft.row(); row <= bottomRight.row(); ++row) {
        const QModelIndex level = model->index(row, MixerModel::LEVEL_COLUMN, parent);
        auto* slider = qobject_cast<QSlider*>(soundTree->indexWidget(level));
        if (slider == nullptr || slider->isSliderDown()) continue;
        const QSignalBlocker quiet(slider);
        slider->setValue(level.data(Qt::EditRole).toInt());
    }
}

}  // namespace sylvora::app
