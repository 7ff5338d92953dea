#include <QApplication>
#include <QDesktopServices>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QTest>
#include <QUrl>

#include "app/info/aboutwindow.h"
#include "app/info/linklabel.h"
#include "app/shell/globals.h"
#include "core/picture/pictureutils.h"
#include "infofixture.h"

namespace sylvora::test {

// Stands in for the mail program and the browser.
class UrlRecorder : public QObject {
    Q_OBJECT
public:
    QStringList opened;
public Q_SLOTS:
    void record(const QUrl& url) { opened << url.toString(); }
};

namespace {

using app::AboutWindow;
using app::gAboutWindow;

using AboutWindowTest = InfoAppTest;

void mouse(QWidget& target, QEvent::Type type, QPoint at) {
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, QPointF(at), QPointF(target.mapToGlobal(at)), button, held, Qt::NoModifier);
    QApplication::sendEvent(&target, &event);
}

TEST_F(AboutWindowTest, ShowsTheGraphicOnceAndTheVersionLine) {
    gAboutWindow->show();
    auto* graphic = qobject_cast<QLabel*>(gAboutWindow->myGetControlByID(AboutWindow::CONTROLS_SIGNATURE, 1));
    auto* version = qobject_cast<QLabel*>(gAboutWindow->myGetControlByID(AboutWindow::CONTROLS_SIGNATURE, 2));
    ASSERT_NE(graphic, nullptr);
    ASSERT_NE(version, nullptr);
    ASSERT_FALSE(graphic->pixmap().isNull());
    EXPECT_GE(graphic->pixmap().width(), 300);
    EXPECT_TRUE(version->text().startsWith(QStringLiteral("Sylvora ")));
    EXPECT_EQ(version->text(), AboutWindow::getInfoString());
    // On a screen that scales, the drawing is drawn at its pixels, not enlarged.
    const QImage sharp = makeCGImageFromImageResource(QStringLiteral("AboutWindowGraphic.svg"), 1.5);
    EXPECT_EQ(sharp.size(), graphic->pixmap().size() * 1.5);
    EXPECT_EQ(sharp.devicePixelRatio(), 1.5);
    const qint64 first = graphic->pixmap().cacheKey();
    gAboutWindow->hide();
    gAboutWindow->show();
    EXPECT_EQ(graphic->pixmap().cacheKey(), first);

    // Escape puts it away, as a dialog's would.
    QApplication::setActiveWindow(gAboutWindow->getWindow());
    settle();
    QTest::keyClick(gAboutWindow->getWindow(), Qt::Key_Escape);
    EXPECT_FALSE(gAboutWindow->isVisible());
}

TEST_F(AboutWindowTest, LinksOpenOnlyWhenReleasedOnThem) {
    UrlRecorder recorder;
    QDesktopServices::setUrlHandler(QStringLiteral("mailto"), &recorder, "record");
    QDesktopServices::setUrlHandler(QStringLiteral("https"), &recorder, "record");
    gAboutWindow->show();
    struct Case {
        int id;
        QString expected;
    };
    for (const Case& c : {Case{4, QStringLiteral("mailto:hello@sylvora.org")}, Case{5, QStringLiteral("https://sylvora.org/")}}) {
        SCOPED_TRACE(c.id);
        auto* link = qobject_cast<app::LinkLabel*>(gAboutWindow->myGetControlByID(AboutWindow::CONTROLS_SIGNATURE, c.id));
        ASSERT_NE(link, nullptr);
        EXPECT_EQ(link->cursor().shape(), Qt::PointingHandCursor);
        EXPECT_TRUE(link->font().underline());
        EXPECT_EQ(link->linkColor(), AboutWindow::NORMAL_LINK_COLOR);
        const QPoint inside = link->rect().center();
        const QPoint outside = inside + QPoint(0, link->height() * 3);

        recorder.opened.clear();
        mouse(*link, QEvent::MouseButtonPress, inside);
        EXPECT_EQ(link->linkColor(), AboutWindow::CLICKED_LINK_COLOR);
        mouse(*link, QEvent::MouseMove, outside);
        EXPECT_EQ(link->linkColor(), AboutWindow::NORMAL_LINK_COLOR);
        mouse(*link, QEvent::MouseMove, inside);
        EXPECT_EQ(link->linkColor(), AboutWindow::CLICKED_LINK_COLOR);
        mouse(*link, QEvent::MouseButtonRelease, inside);
        EXPECT_EQ(link->linkColor(), AboutWindow::NORMAL_LINK_COLOR);
        EXPECT_EQ(recorder.opened, QStringList{c.expected});

        recorder.opened.clear();
        mouse(*link, QEvent::MouseButtonPress, inside);
        mouse(*link, QEvent::MouseMove, outside);
        mouse(*link, QEvent::MouseButtonRelease, outside);
        EXPECT_EQ(link->linkColor(), AboutWindow::NORMAL_LINK_COLOR);
        EXPECT_TRUE(recorder.opened.isEmpty());

        // Escape lets go: the release that follows on the link opens nothing.
        mouse(*link, QEvent::MouseButtonPress, inside);
        ASSERT_EQ(QWidget::keyboardGrabber(), link);
        QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        QApplication::sendEvent(QWidget::keyboardGrabber(), &escape);
        EXPECT_EQ(link->linkColor(), AboutWindow::NORMAL_LINK_COLOR);
        EXPECT_EQ(QWidget::keyboardGrabber(), nullptr);
        mouse(*link, QEvent::MouseButtonRelease, inside);
        EXPECT_TRUE(recorder.opened.isEmpty());
    }
    QDesktopServices::unsetUrlHandler(QStringLiteral("mailto"));
    QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
}

}  // namespace
}  // namespace sylvora::test

#include "aboutwindow_test.moc"
