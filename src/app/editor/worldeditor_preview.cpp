// Hearing one sound of the world alone: its own instance from the world's engine, outside the
// world's pool, driven by its own 1/15-second timer, beside the world's playback.

#include "app/editor/worldeditorwindow.h"
#include "app/shell/globals.h"
#include "app/shell/startup.h"
#include "audio/engine/engine.h"
#include "audio/engine/soundinstance.h"
#include "core/files/nativepath.h"

#include <cstdlib>

namespace sylvora::app {

OSStatus WorldEditorWindow::playSound(bool isLoopSound, SoundID id) {
    if (previewMovie) killSound();
    World& world = *gCurrentWorld;
    const Alias* alias = isLoopSound ? world.getLoopSound(id) : world.getEnvironmentSound(id);
    if (alias == nullptr) return fnfErr;
    FSRef file;
    OSStatus status = FSResolveAlias(*alias, file);
    if (status != noErr) return status;
    status = world.getEngine().openInstance(nativepath::encode(file.path).toStdString(), previewMovie);
    if (status != noErr) {
        previewMovie.reset();
        return status;
    }
    if (previewTimer == nullptr) {
        previewTimer = world.getEventLoop().installTimer(0.0, MOVIES_TASK_TIMER_DELAY, [this] { moviesTaskTimer(); });
    }
    previewSoundID = id;

    double volume = 0.0;
    if (isLoopSound) {
        volume = world.getVolume();  // the loop sound's own volume is not applied
    } else {
        const double min = world.getEnvironmentSoundMinVolume(id);
        const double max = world.getEnvironmentSoundMaxVolume(id);
        volume = min + (static_cast<double>(random()) / 2147483647.0) * (max - min);
    }
    previewMovie->setVolume(static_cast<std::int16_t>(static_cast<int>(volume * 256.0)));
    applicationEngine().setLowLatency(true);  // a person is listening for what they just chose
    previewMovie->start();
    world.getEngine().service();
    return noErr;
}

void WorldEditorWindow::moviesTaskTimer() {
    if (previewMovie) {
        gCurrentWorld->getEngine().service();
        if (previewMovie->isDone()) killSound();
    }
    if (!previewMovie && previewTimer != nullptr) {
        gCurrentWorld->getEventLoop().removeTimer(previewTimer);
        previewTimer = nullptr;
    }
}

void WorldEditorWindow::killSound() {
    previewMovie.reset();
    previewSoundID = 0;
    if (previewTimer != nullptr) {
        gCurrentWorld->getEventLoop().removeTimer(previewTimer);
        previewTimer = nullptr;
    }
}

}  // namespace sylvora::app
