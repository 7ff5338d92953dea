#include "app/editor/environmentsoundmodel.h"

#include "app/shell/globals.h"

namespace sylvora::app {

QString EnvironmentSoundModel::itemName(ItemID item) const {
    if (gCurrentWorld->getGroupIndex(item) >= 0) return gCurrentWorld->getGroupName(item);
    return gCurrentWorld->getEnvironmentSoundFilename(item);
}

bool EnvironmentSoundModel::isContainer(ItemID item) const { return gCurrentWorld->getGroupIndex(item) >= 0; }

bool EnvironmentSoundModel::isDraggable(ItemID item) const {
    return gCurrentWorld->getEnvironmentSoundIndex(item) >= 0;
}

bool EnvironmentSoundModel::setItemName(ItemID item, const QString& name) {
    // An edit that ends after its group was removed changes nothing.
    if (gCurrentWorld->getGroupIndex(item) < 0) return false;
    gCurrentWorld->setGroupName(item, name);
    return true;
}

}  // namespace sylvora::app
