#pragma once

// The menus that list the known worlds (the Known Worlds menu and the Dock menu) as Preferences
// fills them. The desktop app adapts a QMenu; tests record what is filled in.

#include <QString>
#include <QtGlobal>

namespace sylvora {

class KnownWorldsMenu {
public:
    virtual ~KnownWorldsMenu() = default;
    // Removes every item.
    virtual void clear() = 0;
    // Appends one item at the end.
    virtual void appendItem(const QString& text, quint32 commandID, bool checked) = 0;
};

}  // namespace sylvora
