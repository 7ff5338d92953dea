#include "app/shell/commanddispatch.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>

#include "app/shell/applicationevents.h"
#include "app/shell/shellevents.h"
#include "app/windows/mycarbonwindow.h"

namespace sylvora::app {

namespace {
constexpr const char* COMMAND_PROPERTY = "sylvoraCommand";

template <typename Field>
void editField(Field& field, CommandID command) {
    switch (command) {
        case command::UNDO: field.undo(); break;
        case command::REDO: field.redo(); break;
        case command::CUT: field.cut(); break;
        case command::COPY: field.copy(); break;
        case command::PASTE: field.paste(); break;
        case command::SELECT_ALL: field.selectAll(); break;
        default: break;
    }
}

bool doEditCommand(CommandID command) {
    QWidget* focused = focusedEditableText();
    if (focused == nullptr) return false;
    if (auto* line = qobject_cast<QLineEdit*>(focused)) {
        if (command == command::CLEAR) line->del();
        else editField(*line, command);
    } else if (auto* plain = qobject_cast<QPlainTextEdit*>(focused)) {
        if (command == command::CLEAR) plain->textCursor().removeSelectedText();
        else editField(*plain, command);
    } else if (auto* rich = qobject_cast<QTextEdit*>(focused)) {
        if (command == command::CLEAR) rich->textCursor().removeSelectedText();
        else editField(*rich, command);
    }
    return true;
}

bool isEditCommand(CommandID command) {
    switch (command) {
        case command::UNDO: case command::REDO: case command::CUT: case command::COPY:
        case command::PASTE: case command::CLEAR: case command::SELECT_ALL: return true;
        default: return false;
    }
}

OSStatus defaultHandling(CommandID command) {
    if (command == command::QUIT) {
        // Straight out of the loop: Qt's own quit first closes every window, and ours only hide,
        // so a shown window would otherwise veto it.
        QCoreApplication::exit(0);
        return noErr;
    }
    if (command == command::CLOSE) {
        MyCarbonWindow* active = MyCarbonWindow::fromWidget(QApplication::activeWindow());
        if (active == nullptr || !active->isVisible()) return eventNotHandledErr;
        active->close();
        windowClosedByUser();
        return noErr;
    }
    if (isEditCommand(command) && doEditCommand(command)) return noErr;
    return eventNotHandledErr;
}
}  // namespace

OSStatus dispatchCommand(CommandID command) {
    OSStatus status = eventNotHandledErr;
    if (MyCarbonWindow* active = MyCarbonWindow::fromWidget(QApplication::activeWindow())) {
        status = active->handleCommand(command);
    }
    if (status == eventNotHandledErr) status = applicationEventHandler(HICommand{0, command, 0});
    if (status == eventNotHandledErr) status = defaultHandling(command);
    ShellEvents::instance().notifyStateChanged();
    return status;
}

void postCommand(CommandID command) {
    QMetaObject::invokeMethod(qApp, [command] { dispatchCommand(command); }, Qt::QueuedConnection);
}

QAction* makeCommandAction(const QString& text, CommandID command, QObject* parent) {
    auto* action = new QAction(text, parent);
    action->setProperty(COMMAND_PROPERTY, command);
    // Posted, not called: the menu that sent it may be rebuilt by what the command does.
    QObject::connect(action, &QAction::triggered, action, [command] { postCommand(command); });
    return action;
}

CommandID commandOf(const QAction& action) { return action.property(COMMAND_PROPERTY).toUInt(); }

QWidget* focusedEditableText() {
    QWidget* focused = QApplication::focusWidget();
    if (auto* line = qobject_cast<QLineEdit*>(focused)) return line->isReadOnly() ? nullptr : line;
    if (auto* plain = qobject_cast<QPlainTextEdit*>(focused)) return plain->isReadOnly() ? nullptr : plain;
    if (auto* rich = qobject_cast<QTextEdit*>(focused)) return rich->isReadOnly() ? nullptr : rich;
    return nullptr;
}

}  // namespace sylvora::app
