#include "app/shell/unsavedworld.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <cstdio>

#include "app/shell/appstrings.h"
#include "app/shell/globals.h"
#include "core/strings/stringresources.h"
#include "core/world/world.h"
#include "core/world/worldrecovery.h"

namespace sylvora::app {

namespace {

QString misc(const char* key) { return copyLocalizedString(key, MISC_STRINGS_FILE); }

}  // namespace

bool offerUnsavedWorld() {
    const WorldRecovery recovery;
    if (!recovery.exists()) return false;
    QString name = recovery.worldName();
    if (name.isEmpty()) name = copyLocalizedString(UNTITLED_SAVE_AS_FILENAME_KEY, MISC_STRINGS_FILE);

    QMessageBox box(QMessageBox::Question, QApplication::applicationDisplayName(),
                    misc(RESTORE_UNSAVED_WORLD_QUESTION_KEY).arg(name));
    box.setInformativeText(misc(RESTORE_UNSAVED_WORLD_DETAIL_KEY));
    QPushButton* restore = box.addButton(misc(RESTORE_UNSAVED_WORLD_BUTTON_KEY), QMessageBox::AcceptRole);
    box.addButton(misc(DISCARD_UNSAVED_WORLD_BUTTON_KEY), QMessageBox::DestructiveRole);
    box.setDefaultButton(restore);
    box.setWindowModality(Qt::ApplicationModal);
    box.exec();
    if (box.clickedButton() != restore) {
        recovery.remove();
        return false;
    }

    // Kept until the application ends: a second ending from outside before a save still has it.
    int missing = 0;
    if (recovery.restore(*gCurrentWorld, &missing) != noErr) return false;
    gCurrentWorld->start();
    if (missing > 0) {
        QMessageBox left(QMessageBox::Warning, QApplication::applicationDisplayName(),
                         misc(RESTORED_WITHOUT_SOUNDS_KEY).arg(missing), QMessageBox::Ok);
        left.setWindowModality(Qt::ApplicationModal);
        left.exec();
    }
    return true;
}

void keepUnsavedWorld(bool endedFromOutside) {
    const WorldRecovery recovery;
    if (!endedFromOutside || gCurrentWorld == nullptr || !gCurrentWorld->getModified()) {
        recovery.remove();
        return;
    }
    if (const OSStatus status = recovery.write(*gCurrentWorld); status != noErr)
        std::fprintf(stderr, "Sylvora: the unsaved changes could not be kept (%d)\n", static_cast<int>(status));
}

}  // namespace sylvora::app
