#include "app/info/aboutwindow.h"

#include <QLabel>
#include <QLayout>
#include <QPixmap>
#include <QShortcut>

#include "app/resources/appresources.h"
#include "app/info/linklabel.h"
#include "app/shell/helpbook.h"
#include "app/shell/menus.h"
#include "core/picture/pictureutils.h"

namespace sylvora::app {

AboutWindow::AboutWindow() : MyCarbonWindow(QStringLiteral("AboutWindow")) {
    initApplicationResources();
    if (window == nullptr) return;
    addKeyEquivalents(*window);  // no menu bar here, and the commands are the application's
    // A window with nothing to do but be read: Escape puts it away, as a dialog's would.
    auto* escape = new QShortcut(QKeySequence(Qt::Key_Escape), window);
    QObject::connect(escape, &QShortcut::activated, window, [this] { close(); });
    for (int id : {EMAIL_LINK_ID, WEB_LINK_ID}) {
        if (auto* link = qobject_cast<LinkLabel*>(myGetControlByID(CONTROLS_SIGNATURE, id))) {
            link->setLinkColor(NORMAL_LINK_COLOR);
            QObject::connect(link, &LinkLabel::hit, link, [this, link] { linkHit(*link); });
        }
    }
}

QString AboutWindow::getInfoString() {
    return QStringLiteral("Sylvora %1").arg(QStringLiteral(SYLVORA_VERSION));
}

void AboutWindow::show() {
    if (window != nullptr && !graphicLoaded) {
        if (auto* view = qobject_cast<QLabel*>(myGetControlByID(CONTROLS_SIGNATURE, TITLE_GRAPHIC_ID))) {
            const QImage graphic = makeCGImageFromImageResource(QString::fromLatin1(TITLE_GRAPHIC_IMAGE_FILENAME),
                                                                window->devicePixelRatioF());
            if (!graphic.isNull()) view->setPixmap(QPixmap::fromImage(graphic));
        }
        if (auto* line = qobject_cast<QLabel*>(myGetControlByID(CONTROLS_SIGNATURE, INFO_STRING_ID))) {
            line->setText(getInfoString());
        }
        // The window's size follows what it holds, and the person has nothing to resize in it.
        if (QLayout* layout = window->layout()) layout->activate();
        window->setFixedSize(window->sizeHint());
        graphicLoaded = true;
    }
    MyCarbonWindow::show();
}

void AboutWindow::linkHit(const QWidget& link) {
    const auto* label = qobject_cast<const QLabel*>(&link);
    if (label == nullptr) return;
    const QString url = myGetControlID(&link) == EMAIL_LINK_ID ? QString::fromLatin1(EMAIL_URL_PREFIX) + label->text()
                                                                : label->text();
    openURL(url);
}

}  // namespace sylvora::app
