#pragma once

// The mixer: one level slider for each loop sound and environment sound of the current world,
// grouped sounds under their group, live while the world plays, with the sounds heard at the moment
// marked. It follows the editor's changes and a newly opened world; its changes are the World's
// setters, as the editor's are, so they make the world modified and ask to be saved.
//
// Lifecycle: constructed once at start-up -> show() / hide() any number of times (it reads the world
// a few times a second only while shown) -> destroyed at shut-down. Main thread only.

#include <QTimer>

#include "app/windows/mycarbonwindow.h"
#include "core/world/world.h"

class QLabel;
class QSlider;
class QTreeView;

namespace sylvora::app {

class MixerModel;

class MixerWindow : public MyCarbonWindow {
public:
    static constexpr CommandID CONTROLS_SIGNATURE = fourCharCode("MIXR");
    static constexpr int SOUND_TREE_ID = 1;
    static constexpr int EMPTY_LABEL_ID = 2;
    static constexpr int REFRESH_INTERVAL_MS = 250;

    MixerWindow();
    ~MixerWindow() override;

    void show() override;
    void hide() override;
    // [main] Reads the world again: its sounds, their levels, what sounds now, the title.
    void updateDisplay();

    MixerModel* getModel() const { return model; }
    // The level slider of a sound, or null.
    QSlider* sliderFor(SoundID id) const;

private:
    void modelReset();
    void levelChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight);
    void addSliders(const QModelIndex& parent);

    MixerModel* model = nullptr;
    QTreeView* soundTree = nullptr;
    QLabel* emptyLabel = nullptr;
    QTimer refreshTimer;
};

}  // namespace sylvora::app
