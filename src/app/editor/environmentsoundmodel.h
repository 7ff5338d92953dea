#pragma once

// The environment list's rows: groups as containers at the top level, each holding its sounds
// while it is open, and the sounds of no group at the top level beside them. Only a group's name
// can be edited in place, and only sound rows can be dragged.

#include "app/editor/editorlistmodel.h"

namespace sylvora::app {

class EnvironmentSoundModel : public EditorListModel {
    Q_OBJECT
public:
    using EditorListModel::EditorListModel;
    QString itemName(ItemID item) const override;
    bool isContainer(ItemID item) const override;
    bool isDraggable(ItemID item) const override;
    bool setItemName(ItemID item, const QString& name) override;
};

}  // namespace sylvora::app
