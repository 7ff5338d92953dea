#include "app/windows/mycarbonwindow.h"

#include <QCloseEvent>
#include <QMimeData>
#include <QVariant>
#include <algorithm>

#include "app/windows/packagedrops.h"
#include "app/windows/windowentries.h"

namespace sylvora::app {

namespace {
constexpr const char* SIGNATURE_PROPERTY = "signature";
constexpr const char* CONTROL_ID_PROPERTY = "controlID";

CommandID signatureOf(const QWidget& widget) {
    const QByteArray text = widget.property(SIGNATURE_PROPERTY).toString().toLatin1();
    if (text.size() != 4) return 0;
    CommandID code = 0;
    for (char c : text) code = (code << 8) | static_cast<unsigned char>(c);
    return code;
}
}  // namespace

QString worldWindowTitle(const QString& worldName, const QString& windowName) {
    return (worldName.isEmpty() ? windowName : QObject::tr("%1 — %2").arg(worldName, windowName)) + QStringLiteral("[*]");
}

// ---- PlatformWindow ----

PlatformWindow::PlatformWindow(MyCarbonWindow& owner) : owner_(owner) { setAcceptDrops(true); }

void PlatformWindow::closeEvent(QCloseEvent* event) {
    // The close box only hides: the object and its window live until shut-down.
    event->ignore();
    owner_.close();
    // Only the window system's close (the close box) is the person's: the application's own quit
    // closes every window too, and must not be taken for "the last window was closed".
    if (event->spontaneous()) Q_EMIT closedByUser();
}

void PlatformWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    Q_EMIT visibilityChanged(true);
}

void PlatformWindow::hideEvent(QHideEvent* event) {
    QMainWindow::hideEvent(event);
    Q_EMIT visibilityChanged(false);
}

void PlatformWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange) Q_EMIT visibilityChanged(isVisible());
}

void PlatformWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (folderDropHandler() && !droppedFolders(*event->mimeData()).isEmpty()) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    }
}

void PlatformWindow::dropEvent(QDropEvent* event) {
    const QStringList folders = droppedFolders(*event->mimeData());
    if (folders.isEmpty() || !folderDropHandler()) return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
    folderDropHandler()(folders);
}

// ---- MyCarbonWindow ----

std::vector<PlatformWindow*> MyCarbonWindow::MyCarbonWindow_List;

MyCarbonWindow::MyCarbonWindow(const QString& name) {
    auto* made = new PlatformWindow(*this);
    if (!createWindowFromEntry(name, *made)) {
        delete made;
        return;
    }
    window = made;
    window->setObjectName(name);
    addWindowToListOf_MyCarbonWindow(window);
}

MyCarbonWindow::~MyCarbonWindow() {
    if (ownsWindow && window != nullptr) {
        removeWindowFromListOf_MyCarbonWindows(window);
        delete window;
        window = nullptr;
    }
}

bool MyCarbonWindow::isVisible() const { return window != nullptr && window->isVisible(); }

QWidget* MyCarbonWindow::myGetControlByID(CommandID signature, int id) const {
    if (window == nullptr) return nullptr;
    const auto children = window->findChildren<QWidget*>();
    for (QWidget* child : children) {
        if (signatureOf(*child) == signature && child->property(CONTROL_ID_PROPERTY).toInt() == id) {
            return child;
        }
    }
    return nullptr;
}

int MyCarbonWindow::myGetControlID(const QWidget* control) {
    return control == nullptr ? 0 : control->property(CONTROL_ID_PROPERTY).toInt();
}

MyCarbonWindow* MyCarbonWindow::fromWidget(const QWidget* widget) {
    if (widget == nullptr) return nullptr;
    auto* platform = qobject_cast<PlatformWindow*>(widget->window());
    return platform == nullptr ? nullptr : &platform->owner();
}

void MyCarbonWindow::show() {
    if (window == nullptr) return;
    if (!window->isVisible()) window->show();
    window->raise();
    window->activateWindow();
}

void MyCarbonWindow::hide() {
    if (window != nullptr) window->hide();
}

OSStatus MyCarbonWindow::handleCommand(CommandID /*command*/) { return eventNotHandledErr; }

void MyCarbonWindow::handleTextChanged(QWidget* /*control*/) {}

void MyCarbonWindow::addWindowToListOf_MyCarbonWindow(PlatformWindow* added) {
    MyCarbonWindow_List.push_back(added);
}

void MyCarbonWindow::removeWindowFromListOf_MyCarbonWindows(PlatformWindow* removed) {
    auto found = std::find(MyCarbonWindow_List.begin(), MyCarbonWindow_List.end(), removed);
    if (found != MyCarbonWindow_List.end()) MyCarbonWindow_List.erase(found);
}

}  // namespace sylvora::app
