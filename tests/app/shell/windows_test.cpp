// The window base, the text notifier, the error alert and the help book.

#include <QApplication>
#include <QDesktopServices>
#include <QFile>
#include <QPointer>
#include <QStandardPaths>
#include <QTextBrowser>
#include <QLineEdit>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QtTest/QTest>

#include "app/info/getinfowindow.h"
#include "app/shell/alerts.h"
#include "app/shell/applicationevents.h"
#include "app/shell/globals.h"
#include "app/shell/helpbook.h"
#include "app/support/appfixture.h"
#include "app/windows/mycarbonwindow.h"
#include "app/windows/textchangenotifier.h"
#include "core/platform/beep.h"

using namespace sylvora;
using namespace sylvora::app;
using namespace sylvora::test;

namespace sylvora::test {
// Stands in for the browser.
class BrowserStandIn : public QObject {
    Q_OBJECT
public:
    QList<QUrl> opened;
public Q_SLOTS:
    void open(const QUrl& url) { opened << url; }
};
}  // namespace sylvora::test

namespace {

class ShellWindows : public AppTest {};

class ListeningWindow : public MyCarbonWindow {
public:
    ListeningWindow() : MyCarbonWindow(QStringLiteral("AboutWindow")) {}
    void handleTextChanged(QWidget* control) override { changed.push_back(control); }
    QMainWindow* platform() const { return window; }
    std::vector<QWidget*> changed;
};

}  // namespace

TEST_F(ShellWindows, TheCloseBoxHidesAndTheWindowComesBackAsItWas) {
    gGetInfoWindow->show();
    QWidget* window = gGetInfoWindow->getWindow();
    window->resize(420, 300);
    EXPECT_FALSE(window->close());  // refused: the window only hides
    EXPECT_FALSE(gGetInfoWindow->isVisible());
    gGetInfoWindow->show();
    EXPECT_EQ(gGetInfoWindow->getWindow(), window);
    EXPECT_EQ(window->size(), QSize(420, 300));
    EXPECT_EQ(MyCarbonWindow::fromWidget(window), gGetInfoWindow);
    EXPECT_EQ(gGetInfoWindow->myGetControlByID(fourCharCode("none"), 1), nullptr);
}

TEST_F(ShellWindows, TextNotifierPostsOnlyForAPersonsEditsAndThroughTheLoop) {
    ListeningWindow owner;
    auto* line = new QLineEdit(owner.platform());
    auto* text = new QPlainTextEdit(owner.platform());
    TextChangeNotifier::installTextChangeNotifier(line);
    TextChangeNotifier::installTextChangeNotifier(text);
    owner.show();

    line->setText(QStringLiteral("from the program"));
    TextChangeNotifier::setTextWithoutNotice(text, QStringLiteral("also from the program"));
    QTest::keyClick(line, Qt::Key_A);
    QTest::keyClick(text, Qt::Key_B);
    EXPECT_TRUE(owner.changed.empty()) << "delivered later, by the loop";
    ASSERT_TRUE(processEventsUntil([&owner] { return owner.changed.size() >= 2; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(owner.changed, (std::vector<QWidget*>{line, text}));
    EXPECT_EQ(line->text(), QStringLiteral("from the programa")) << "the key itself is never held back";
}

TEST_F(ShellWindows, ErrorAlertSaysWhatTheStatusMeansThenItsNumber) {
    struct Case {
        OSStatus status;
        QString informative;
    };
    for (const Case& c : {Case{-34, "The disk is full (-34)."}, Case{-43, "A file it needs is missing (-43)."},
                          Case{32767, "The world has too many sounds to play at once (32767)."},
                          Case{-32768, "Error -32768."}, Case{0, ""}}) {
        MessageSeen seen;
        answerMessageBox(QMessageBox::Ok, &seen);
        showErrorAlert(QStringLiteral("Error Opening World"), c.status);
        ASSERT_TRUE(waitForAnswers());
        EXPECT_EQ(seen.text, QStringLiteral("Error Opening World"));
        EXPECT_EQ(seen.informativeText, c.informative);
        EXPECT_TRUE(seen.detailedText.isEmpty()) << "nothing hidden behind Show Details";
    }
}

TEST_F(ShellWindows, ASaveThatDoesNotFindASoundNamesItInTheAlert) {
    const QString package = makeWorldPackage(QStringLiteral("Creek"));
    ASSERT_EQ(doOpenDocsEvent({package}), noErr);
    ASSERT_TRUE(QFile::remove(package + QStringLiteral("/Loop Sounds/loop.wav")));
    const OSStatus status = gCurrentWorld->doSave();
    ASSERT_EQ(status, fnfErr);
    MessageSeen seen;
    answerMessageBox(QMessageBox::Ok, &seen);
    showSaveErrorAlert(status);
    ASSERT_TRUE(waitForAnswers());
    EXPECT_EQ(seen.text, QStringLiteral("“Creek” could not be saved: “loop.wav” is missing."));
    EXPECT_EQ(seen.informativeText, QStringLiteral("A file it needs is missing (-43)."));

    // The next save that finds everything says nothing of it.
    gCurrentWorld->clearLoopSoundList();
    ASSERT_EQ(gCurrentWorld->doSave(), noErr);
    EXPECT_TRUE(gCurrentWorld->getMissingFileOfLastSave().isEmpty());
}

TEST_F(ShellWindows, HelpShowsItsPageCopiedOutInTheBrowserOrElseInAWindowOfItsOwn) {
    const QByteArray path = qgetenv("PATH");
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::CacheLocation) + QStringLiteral("/help");
    struct Case {
        bool browser;
        bool cacheWritable;
    };
    for (const auto [browser, cacheWritable] : {Case{true, true}, Case{false, true}, Case{true, false}}) {
        SCOPED_TRACE(browser ? "with a browser" : "without one");
        SCOPED_TRACE(cacheWritable ? "" : "a book that cannot be copied out is read in the window");
        if (!cacheWritable) {
            ASSERT_TRUE(QDir(cache).removeRecursively());
            dir.writeFile(cache.mid(dir.path().size() + 1), "");  // a file where its folder would be
        }
        const QString bin = dir.makeDir(browser ? QStringLiteral("with") : QStringLiteral("without"));
        if (browser) dir.writeFile(QStringLiteral("with/xdg-open"), "#!/bin/sh\n");
        QFile::setPermissions(bin + QStringLiteral("/xdg-open"), QFile::ReadOwner | QFile::ExeOwner);
        qputenv("PATH", bin.toUtf8());
        BrowserStandIn stand;
        QDesktopServices::setUrlHandler(QStringLiteral("file"), &stand, "open");
        const OSStatus status = myGotoHelpPage(QStringLiteral("CreatingAWorld.html"), QStringLiteral("groups"));
        QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
        qputenv("PATH", path);
        ASSERT_EQ(status, noErr);
        QPointer<QTextBrowser> window;
        for (QWidget* top : QApplication::topLevelWidgets()) {
            if (auto* viewer = qobject_cast<QTextBrowser*>(top); viewer != nullptr && viewer->isVisible()) window = viewer;
        }
        if (browser && cacheWritable) {
            ASSERT_EQ(stand.opened.size(), 1);
            EXPECT_EQ(stand.opened[0].fragment(), QStringLiteral("groups"));
            EXPECT_EQ(stand.opened[0].toLocalFile(), cache + QStringLiteral("/CreatingAWorld.html"));
            EXPECT_TRUE(QFile::exists(stand.opened[0].toLocalFile()));
            EXPECT_TRUE(window.isNull());
        } else {
            EXPECT_TRUE(stand.opened.isEmpty());
            ASSERT_FALSE(window.isNull());
            EXPECT_EQ(window->source().fileName(), QStringLiteral("CreatingAWorld.html"));
            window->close();  // and gone, not kept hidden
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            EXPECT_TRUE(window.isNull());
        }
    }
}

// The About window's links: plain addresses open in the browser; what no browser should be handed
// (beyond ASCII, or longer than 255 characters) beeps instead.
TEST_F(ShellWindows, OnlyShortAsciiAddressesAreHandedToTheBrowser) {
    int beeps = 0;
    setSysBeepHook([&beeps] { ++beeps; });
    BrowserStandIn stand;
    QDesktopServices::setUrlHandler(QStringLiteral("https"), &stand, "open");
    const QString site = QStringLiteral("https://sylvora.example/");
    for (const QString& url : {site, site + QString(255 - site.size(), QLatin1Char('a')), site + QString(QChar(0x80)),
                               site + QStringLiteral("caf\u00e9"), site + QString(256 - site.size(), QLatin1Char('a'))}) {
        openURL(url);
    }
    QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
    setSysBeepHook({});
    EXPECT_EQ(stand.opened.size(), 2);
    EXPECT_EQ(beeps, 3);
}

#include "windows_test.moc"
