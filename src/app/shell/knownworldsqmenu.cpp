#include "app/shell/knownworldsqmenu.h"

#include <QMenu>

#include "app/shell/commanddispatch.h"

namespace sylvora::app {

void KnownWorldsQMenu::clear() {
    // Removed, then deleted later: the menu may be emitting from one of these actions right now.
    const auto actions = menu_.actions();
    for (QAction* action : actions) {
        menu_.removeAction(action);
        if (action->parent() == &menu_) action->deleteLater();
    }
}

void KnownWorldsQMenu::appendItem(const QString& text, quint32 commandID, bool checked) {
    QAction* item = makeCommandAction(text, commandID, &menu_);
    item->setCheckable(true);
    item->setChecked(checked);
    menu_.addAction(item);
}

}  // namespace sylvora::app
