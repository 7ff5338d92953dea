#include "app/windows/windowentries.h"

#include <QMainWindow>

#include "ui_AboutWindow.h"
#include "ui_GetInfoWindow.h"
#include "ui_MixerWindow.h"
#include "ui_WorldEditorWindow.h"

namespace sylvora::app {

namespace {
template <typename Entry>
void fill(QMainWindow& window) {
    Entry entry;
    entry.setupUi(&window);  // the controls belong to the window; the entry struct only points
}
}  // namespace

bool createWindowFromEntry(const QString& name, QMainWindow& window) {
    if (name == QLatin1String("WorldEditorWindow")) {
        fill<Ui::WorldEditorWindow>(window);
    } else if (name == QLatin1String("GetInfoWindow")) {
        fill<Ui::GetInfoWindow>(window);
    } else if (name == QLatin1String("MixerWindow")) {
        fill<Ui::MixerWindow>(window);
    } else if (name == QLatin1String("AboutWindow")) {
        fill<Ui::AboutWindow>(window);
    } else {
        return false;
    }
    return true;
}

}  // namespace sylvora::app
