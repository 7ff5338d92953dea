#include "app/shell/globals.h"

#include <QFileDialog>
#include <QMessageBox>

namespace sylvora::app {

World* gCurrentWorld = nullptr;
WorldEditorWindow* gWorldEditorWindow = nullptr;
GetInfoWindow* gGetInfoWindow = nullptr;
AboutWindow* gAboutWindow = nullptr;
MixerWindow* gMixerWindow = nullptr;

AskSaveChangesActions gAskSaveChangesAction = ASK_SAVE_CHANGES_NONE;
AliasHandle gNextOpenDocument;

QMenu* dockMenu = nullptr;
QMenu* dockVolumeSubMenu = nullptr;

QPointer<QFileDialog> navOpenDialog;
QPointer<QFileDialog> navPutDialog;
QPointer<QMessageBox> navAskSaveChangesDialog;

}  // namespace sylvora::app
