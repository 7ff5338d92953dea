#include "app/shell/documentflow.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

#include "app/editor/worldeditorwindow.h"
#include "app/info/getinfowindow.h"
#include "app/shell/alerts.h"
#include "app/shell/applicationevents.h"
#include "app/shell/commanddispatch.h"
#include "app/shell/shellevents.h"
#include "app/shell/worldfiledialogs.h"
#include "app/shell/worldfromfolderoffer.h"
#include "app/shell/appstrings.h"
#include "core/platform/beep.h"
#include "core/strings/stringresources.h"

namespace sylvora::app {

namespace {

void disposeNextOpenDocument() { gNextOpenDocument.reset(); }

void abandonWaitingAction() {
    disposeNextOpenDocument();
    gAskSaveChangesAction = ASK_SAVE_CHANGES_NONE;
}

void openChosenPackage(const QString& path) {
    FSRef package;
    OSStatus status = FSPathMakeRef(path, package);
    bool wasKnown = false;
    if (status == noErr) {
        wasKnown = gPrefs->isAKnownWorld(package);
        status = loadWorldFromPackage(package);
    }
    if (status != noErr) showOpenErrorAlert(path, status);
    else doAfterLoadSteps(wasKnown);
}

void saveAsChosen(const QString& folder, const QString& name) {
    FSRef parent;
    OSStatus status = FSPathMakeRef(folder, parent);
    if (status == noErr) status = gCurrentWorld->doSaveAs(parent, name);
    if (status == noErr) {
        gPrefs->updateKnownWorlds(gCurrentWorld->getPackageAlias(), gCurrentWorld->getName());
        if (gWorldEditorWindow->isVisible()) gWorldEditorWindow->startEditing();
        return;
    }
    abandonWaitingAction();
    showSaveErrorAlert(status);
}

QString askSaveChangesText(AskSaveChangesActions action) {
    const char* key = action == ASK_SAVE_CHANGES_QUIT ? ASK_SAVE_CHANGES_QUITTING_KEY : ASK_SAVE_CHANGES_CLOSING_KEY;
    return copyLocalizedString(key, MISC_STRINGS_FILE).arg(gCurrentWorld->copyDefaultSaveAsFilename(false));
}

}  // namespace

void doWorldOpenPrompt() {
    if (!navOpenDialog.isNull()) {
        SysBeep(1);
        return;
    }
    auto* dialog = new WorldOpenDialog();
    navOpenDialog = dialog;
    QObject::connect(dialog, &QDialog::finished, [dialog](int result) {
        if (result == QDialog::Accepted && !dialog->chosenFolder().isEmpty()) offerWorldFromFolder(dialog->chosenFolder());
        else if (result == QDialog::Accepted) openChosenPackage(dialog->chosenPackage());
        else navDialogEventCallback(NavSelector::UserAction, NavUserAction::Cancel);
        navDialogEventCallback(NavSelector::Terminate, NavUserAction::Cancel);
    });
    dialog->show();
}

void doWorldSaveAsPrompt() {
    if (!navPutDialog.isNull()) {
        SysBeep(1);
        return;
    }
    auto* dialog = new WorldSaveDialog(gCurrentWorld->copyDefaultSaveAsFilename(true));
    navPutDialog = dialog;
    QObject::connect(dialog, &QDialog::finished, [dialog](int result) {
        if (result == QDialog::Accepted) saveAsChosen(dialog->chosenFolder(), dialog->chosenName());
        else navDialogEventCallback(NavSelector::UserAction, NavUserAction::Cancel);
        navDialogEventCallback(NavSelector::Terminate, NavUserAction::Cancel);
    });
    dialog->show();
}

void navDialogEventCallback(NavSelector selector, NavUserAction action) {
    if (selector == NavSelector::Terminate) {
        if (!navPutDialog.isNull()) {
            navPutDialog = nullptr;
            doPostAskSaveChangesAction();
        }
        navOpenDialog = nullptr;
        // A quit still waiting is under way: nothing is shown for it.
        if (gAskSaveChangesAction != ASK_SAVE_CHANGES_QUIT) showSomethingWhenInvisible();
        ShellEvents::instance().notifyStateChanged();
    } else if (action == NavUserAction::Cancel) {
        abandonWaitingAction();
    }
}

void doAskSaveChanges(AskSaveChangesActions action, const Alias* alias) {
    if (!navAskSaveChangesDialog.isNull()) {
        SysBeep(1);
        return;
    }
    auto* box = new QMessageBox(QMessageBox::Warning, QApplication::applicationDisplayName(),
                                askSaveChangesText(action),
                                QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel);
    box->setInformativeText(copyLocalizedString(ASK_SAVE_CHANGES_DETAIL_KEY, MISC_STRINGS_FILE));
    box->button(QMessageBox::Discard)->setText(copyLocalizedString(DONT_SAVE_BUTTON_KEY, MISC_STRINGS_FILE));
    box->setDefaultButton(QMessageBox::Save);
    box->setWindowModality(Qt::ApplicationModal);
    box->setAttribute(Qt::WA_DeleteOnClose);
    navAskSaveChangesDialog = box;
    gAskSaveChangesAction = action;
    if (action == ASK_SAVE_CHANGES_OPEN_DOCUMENT && alias != nullptr) gNextOpenDocument = alias->copy();
    // Decided when the box has gone, whatever took it away: the title bar's close button, Alt+F4 and
    // Escape click no button, and all of them are Cancel.
    QObject::connect(box, &QDialog::finished, [box] {
        NavUserAction answer = NavUserAction::Cancel;
        switch (box->standardButton(box->clickedButton())) {
            case QMessageBox::Save: answer = NavUserAction::SaveChanges; break;
            case QMessageBox::Discard: answer = NavUserAction::DontSaveChanges; break;
            default: break;
        }
        navAskSaveChangesEventCallback(NavSelector::UserAction, answer);
        navAskSaveChangesEventCallback(NavSelector::Terminate, NavUserAction::Cancel);
    });
    // show(), not open(): open() would make it window-modal, and with no parent that holds nothing.
    box->show();
}

void navAskSaveChangesEventCallback(NavSelector selector, NavUserAction action) {
    if (selector == NavSelector::Terminate) {
        navAskSaveChangesDialog = nullptr;
        if (gAskSaveChangesAction == ASK_SAVE_CHANGES_NONE) showSomethingWhenInvisible();
        ShellEvents::instance().notifyStateChanged();
        return;
    }
    switch (action) {
        case NavUserAction::SaveChanges: postCommand(command::SAVE); break;  // once the dialog is gone
        case NavUserAction::DontSaveChanges: doPostAskSaveChangesAction(); break;
        case NavUserAction::Cancel: abandonWaitingAction(); break;
        default: break;
    }
}

void doPostAskSaveChangesAction() {
    switch (gAskSaveChangesAction) {
        case ASK_SAVE_CHANGES_QUIT:
            QCoreApplication::exit(0);  // as the default quit: no window can veto it
            break;
        case ASK_SAVE_CHANGES_OPEN_DOCUMENT: {
            if (!gNextOpenDocument) break;
            FSRef package;
            OSStatus status = FSResolveAlias(*gNextOpenDocument, package);
            bool wasKnown = false;
            if (status == noErr) {
                wasKnown = gPrefs->isAKnownWorld(package);
                status = loadWorldFromPackage(package);
            }
            const QString path = package.path.isEmpty() ? gNextOpenDocument->recordedPath() : package.path;
            disposeNextOpenDocument();
            gAskSaveChangesAction = ASK_SAVE_CHANGES_NONE;
            if (status == noErr) doAfterLoadSteps(wasKnown);
            else showOpenErrorAlert(path, status);
            break;
        }
        case ASK_SAVE_CHANGES_OPEN_PROMPT:
            gAskSaveChangesAction = ASK_SAVE_CHANGES_NONE;
            doWorldOpenPrompt();
            break;
        case ASK_SAVE_CHANGES_NEW_WORLD:
            if (gGetInfoWindow->isVisible()) gGetInfoWindow->hide();
            gCurrentWorld->resetToInitialState();
            gWorldEditorWindow->startEditing();
            gAskSaveChangesAction = ASK_SAVE_CHANGES_NONE;
            break;
        case ASK_SAVE_CHANGES_NONE:
            break;
    }
    ShellEvents::instance().notifyStateChanged();
}

}  // namespace sylvora::app
