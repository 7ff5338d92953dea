#include "app/editor/loopsoundmodel.h"

#include "app/shell/globals.h"

namespace sylvora::app {

QString LoopSoundModel::itemName(ItemID item) const { return gCurrentWorld->getLoopSoundFilename(item); }

}  // namespace sylvora::app
