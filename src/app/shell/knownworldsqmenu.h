#pragma once

// A QMenu as the known-worlds list fills it: one checkable item per world, carrying its command.

#include "core/prefs/knownworldsmenu.h"

class QMenu;

namespace sylvora::app {

class KnownWorldsQMenu final : public KnownWorldsMenu {
public:
    explicit KnownWorldsQMenu(QMenu& menu) : menu_(menu) {}
    void clear() override;
    void appendItem(const QString& text, quint32 commandID, bool checked) override;

private:
    QMenu& menu_;
};

}  // namespace sylvora::app
