#pragma once

// The loop sound list's rows: the current world's loop sounds, one flat column of file names.

#include "app/editor/editorlistmodel.h"

namespace sylvora::app {

class LoopSoundModel : public EditorListModel {
    Q_OBJECT
public:
    using EditorListModel::EditorListModel;
    QString itemName(ItemID item) const override;
};

}  // namespace sylvora::app
