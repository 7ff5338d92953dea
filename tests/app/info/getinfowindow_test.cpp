#include <QApplication>
#include <QScreen>
#include <QImage>
#include <QTextLayout>

#include "app/info/getinfowindow.h"
#include "app/info/getinfowindowfont.h"
#include "app/info/softshadow.h"
#include "app/shell/commanddispatch.h"
#include "app/shell/globals.h"
#include "infofixture.h"

namespace sylvora::test {
namespace {

using app::GetInfoWindow;
using app::gCurrentWorld;
using app::gGetInfoWindow;

constexpr app::CommandID TINF = app::command::TOGGLE_INFO;

QWidget* imageView() { return gGetInfoWindow->myGetControlByID(GetInfoWindow::CONTROLS_SIGNATURE, 1); }

app::FontRatios applicationFontRatios() {
    QRawFont font;
    app::getGetInfoWindowFontRef(&font, nullptr);
    return app::fontRatiosOf(font);
}

// Ticks the slide by hand until it stops; returns how many ticks it took.
int slideToTheEnd() {
    int ticks = 0;
    while (gGetInfoWindow->isSliding() && ticks < 100) {
        gGetInfoWindow->scrollTextTimer();
        ++ticks;
    }
    return ticks;
}

class GetInfoWindowTest : public InfoAppTest {
protected:
    static constexpr QColor GREEN{40, 110, 60};

    // The world's picture, 400 x 300 of one colour, and its three texts, shown in the window.
    void showWorldWith(const QString& description) {
        setWorldPicture({400, 300}, GREEN);
        gCurrentWorld->setName(QStringLiteral("Evening Forest"));
        gCurrentWorld->setAuthor(QStringLiteral("M. Ostrander"));
        gCurrentWorld->setDescription(description);
        gGetInfoWindow->show();
        settle();
    }
};

TEST_F(GetInfoWindowTest, TextSizesAndPlacesAreFractionsOfTheHeight) {
    const app::FontRatios ratios = applicationFontRatios();
    ASSERT_GT(ratios.ascent, 0.5);
    ASSERT_GT(ratios.descent, 0.0);
    const app::InfoTextMetrics m = GetInfoWindow::getTextMetrics(300.0, ratios);
    EXPECT_DOUBLE_EQ(m.nameSize, 45.0);
    EXPECT_DOUBLE_EQ(m.authorSize, 27.0);
    EXPECT_DOUBLE_EQ(m.descriptionSize, 26.4);
    // The ascent lines: the name's 21 below the top edge, the author's 75.
    EXPECT_NEAR(m.nameBaseline - ratios.ascent * m.nameSize, 21.0, 1e-9);
    EXPECT_NEAR(m.authorBaseline - ratios.ascent * m.authorSize, 75.0, 1e-9);
    EXPECT_NEAR(m.lineHeight, 26.4 * (ratios.ascent + ratios.descent + ratios.leading), 1e-9);
    // A block of one, three or six lines has its middle 0.33 of the height above the bottom.
    for (int lines : {1, 3, 6}) {
        const double top = m.descriptionBaseline(0, lines) - ratios.ascent * m.descriptionSize;
        const double bottom = m.descriptionBaseline(lines - 1, lines) + (ratios.descent + ratios.leading) * m.descriptionSize;
        EXPECT_NEAR((top + bottom) / 2.0, 300.0 - 99.0, 1e-9) << lines << " lines";
        EXPECT_NEAR(m.descriptionBaseline(lines - 1, lines) - m.descriptionBaseline(0, lines), (lines - 1) * m.lineHeight, 1e-9);
    }
}

TEST_F(GetInfoWindowTest, DescriptionIsCutAfterTheSixthLine) {
    const auto style = gGetInfoWindow->createATSUIStyle(26.4);
    ASSERT_NE(style, nullptr);
    const double width = 500.0 / style->scale;
    QString longText;
    for (int i = 0; i < 60; ++i) longText += QStringLiteral("rain on leaves, ");
    auto layout = GetInfoWindow::createATSUILayout(style.get(), width, 0.5, longText);
    ASSERT_NE(layout, nullptr);
    EXPECT_EQ(GetInfoWindow::breakDescriptionLines(*layout, width), 6);
    const QTextLine last = layout->lineAt(5);
    EXPECT_LE(last.naturalTextWidth(), width);
    // Cut between two words, with an ellipsis where the rest would be.
    const QString shown = layout->text();
    ASSERT_TRUE(shown.endsWith(QChar(0x2026))) << shown.toStdString();
    const QString kept = shown.chopped(1);
    EXPECT_TRUE(longText.startsWith(kept));
    EXPECT_TRUE(kept.endsWith(QLatin1String("leaves")) || kept.endsWith(QLatin1String("rain")) || kept.endsWith(QLatin1String("on")))
        << kept.toStdString();
    EXPECT_EQ(last.textStart() + last.textLength(), shown.size()) << "the ellipsis is on the sixth line";
    EXPECT_GT(kept.size(), last.textStart() + 1) << "the sixth line holds words, not the ellipsis alone";

    auto shortLayout = GetInfoWindow::createATSUILayout(style.get(), width, 0.5, QStringLiteral("Wind."));
    EXPECT_EQ(GetInfoWindow::breakDescriptionLines(*shortLayout, width), 1);
    EXPECT_EQ(GetInfoWindow::createATSUILayout(style.get(), width, 0.5, QString()), nullptr);
    EXPECT_EQ(GetInfoWindow::createATSUILayout(nullptr, width, 0.5, longText), nullptr);
}

TEST_F(GetInfoWindowTest, ResizingKeepsThePictureProportionsAndTheMinimum) {
    struct Case {
        QSize ideal, proposed, expected;
    };
    const Case cases[] = {
        {{400, 200}, {300, 300}, {300, 150}},
        {{400, 200}, {1000, 160}, {320, 160}},
        {{400, 200}, {100, 300}, {150, 150}},  // 100 x 50 by proportion; the minimum wins
        {{500, 300}, {600, 300}, {500, 300}},
        {{200, 400}, {50, 50}, {150, 150}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(GetInfoWindow::constrain(c.proposed, c.ideal), c.expected) << c.proposed.width() << "x" << c.proposed.height();
    }
}

TEST_F(GetInfoWindowTest, NewPictureSetsTheIdealSizeNewTextDoesNotAndDragsKeepProportions) {
    gGetInfoWindow->show();
    settle();
    EXPECT_EQ(imageView()->size(), QSize(500, 300));  // no picture

    setWorldPicture({400, 200}, Qt::darkGreen);
    gGetInfoWindow->updateDisplay();
    settle();
    EXPECT_EQ(imageView()->size(), QSize(400, 200));

    // A person drags the window out of proportion; it settles back to the picture's.
    QWidget* window = gGetInfoWindow->getWindow();
    window->resize(window->size() + QSize(200, 160));
    settle();
    EXPECT_EQ(imageView()->size(), QSize(600, 300));

    gCurrentWorld->setName(QStringLiteral("Rainy Bay"));
    gGetInfoWindow->updateDisplay();
    settle();
    EXPECT_EQ(imageView()->size(), QSize(600, 300));

    // The maximize button toggles between the picture's size and the person's.
    gGetInfoWindow->getWindow()->showMaximized();
    EXPECT_TRUE(processEventsUntil([] { return imageView()->size() == QSize(400, 200); }, 2000));
    gGetInfoWindow->getWindow()->showMaximized();
    EXPECT_TRUE(processEventsUntil([] { return imageView()->size() == QSize(600, 300); }, 2000));
    EXPECT_FALSE(gGetInfoWindow->getWindow()->isMaximized());

    setWorldPicture({300, 240}, Qt::darkBlue);
    gGetInfoWindow->updateDisplay();
    settle();
    EXPECT_EQ(imageView()->size(), QSize(300, 240));
}

TEST_F(GetInfoWindowTest, AtTheMinimumSizeThePictureKeepsItsProportionsInsideBands) {
    setWorldPicture({400, 100}, GREEN);
    gGetInfoWindow->show();
    settle();
    gGetInfoWindow->getWindow()->resize(60, 15);
    settle();
    ASSERT_EQ(imageView()->size(), QSize(150, 150));
    const QImage shown = imageView()->grab().toImage();
    EXPECT_EQ(QColor(shown.pixel(75, 75)), GREEN);  // 150 x 37, in the middle
    EXPECT_NE(QColor(shown.pixel(75, 3)), GREEN);
    EXPECT_NE(QColor(shown.pixel(75, 146)), GREEN);
}

TEST_F(GetInfoWindowTest, ABareCarriageReturnBreaksTheLineAsANewlineDoes) {
    showWorldWith(QString());
    QImage seen[2];
    const char* breaks[] = {"\r", "\n"};
    for (int i = 0; i < 2; ++i) {
        gCurrentWorld->setName(QStringLiteral("Night%1Marsh").arg(QLatin1String(breaks[i])));
        gCurrentWorld->setDescription(QStringLiteral("Frogs%1Rain%1Owls").arg(QLatin1String(breaks[i])));
        gGetInfoWindow->updateDisplay();
        settle();
        seen[i] = imageView()->grab().toImage();
    }
    EXPECT_EQ(seen[0], seen[1]);
}

TEST_F(GetInfoWindowTest, AShadowNarrowerThanAPixelIsStillSoft) {
    QImage dot(9, 9, QImage::Format_ARGB32_Premultiplied);
    dot.fill(Qt::transparent);
    dot.setPixel(4, 4, qRgba(255, 255, 255, 255));
    const QImage shadow = app::makeSoftShadow(dot, 0.8, Qt::black);  // 0.008 of a 100-pixel view
    EXPECT_GT(qAlpha(shadow.pixel(5, 4)), 0);
    EXPECT_LT(qAlpha(shadow.pixel(4, 4)), 255);
    EXPECT_EQ(qAlpha(shadow.pixel(8, 4)), 0);
    EXPECT_EQ(app::softShadowReach(0.8), 3);
    EXPECT_EQ(app::softShadowReach(0.0), 0);
}

TEST_F(GetInfoWindowTest, SlideTakesThirtyOneTicksEachWayAndReversesMidway) {
    gGetInfoWindow->show();
    ASSERT_EQ(gGetInfoWindow->handleCommand(TINF), 0);
    EXPECT_EQ(gGetInfoWindow->getScrollDirection(), 1);
    EXPECT_EQ(slideToTheEnd(), 31);
    EXPECT_FALSE(gGetInfoWindow->isInfoShown());
    EXPECT_EQ(gGetInfoWindow->getScrollProgress(), 1.0);
    EXPECT_EQ(gGetInfoWindow->getScrollDirection(), 0);

    gGetInfoWindow->handleCommand(TINF);
    EXPECT_TRUE(gGetInfoWindow->isInfoShown());  // drawn again from the first step down
    EXPECT_EQ(gGetInfoWindow->getScrollDirection(), -1);
    EXPECT_EQ(slideToTheEnd(), 31);
    EXPECT_EQ(gGetInfoWindow->getScrollProgress(), 0.0);

    gGetInfoWindow->handleCommand(TINF);
    for (int i = 0; i < 10; ++i) gGetInfoWindow->scrollTextTimer();
    EXPECT_NEAR(gGetInfoWindow->getScrollProgress(), 10.0 / 30.0, 1e-9);
    gGetInfoWindow->handleCommand(TINF);
    EXPECT_EQ(gGetInfoWindow->getScrollDirection(), -1);
    EXPECT_NEAR(gGetInfoWindow->getScrollProgress(), 10.0 / 30.0, 1e-9);  // turns round where it was
    const int back = slideToTheEnd();
    EXPECT_GE(back, 10);
    EXPECT_LE(back, 11);
    EXPECT_TRUE(gGetInfoWindow->isInfoShown());
    EXPECT_EQ(gGetInfoWindow->getScrollProgress(), 0.0);

    // The shell's command reaches the window while it is the active one.
    QApplication::setActiveWindow(gGetInfoWindow->getWindow());
    settle();
    ASSERT_EQ(QApplication::activeWindow(), gGetInfoWindow->getWindow());
    EXPECT_EQ(app::dispatchCommand(TINF), 0);
    EXPECT_TRUE(gGetInfoWindow->isSliding());
}

TEST_F(GetInfoWindowTest, HidingMidSlideLeavesTheTextsInPlaceForTheNextShow) {
    gGetInfoWindow->show();
    gGetInfoWindow->handleCommand(TINF);
    for (int i = 0; i < 12; ++i) gGetInfoWindow->scrollTextTimer();
    gGetInfoWindow->hide();
    EXPECT_FALSE(gGetInfoWindow->isSliding());
    EXPECT_EQ(imageView()->findChild<QWidget*>(QStringLiteral("infoOverlay")), nullptr);
    gGetInfoWindow->show();
    EXPECT_FALSE(gGetInfoWindow->isSliding());
    EXPECT_TRUE(gGetInfoWindow->isInfoShown());
    EXPECT_EQ(gGetInfoWindow->getScrollProgress(), 0.0);
    EXPECT_NE(imageView()->findChild<QWidget*>(QStringLiteral("infoOverlay")), nullptr);
}

TEST_F(GetInfoWindowTest, TitleNamesTheWorld) {
    gCurrentWorld->setName(QStringLiteral("Evening Forest"));
    gGetInfoWindow->show();
    EXPECT_EQ(gGetInfoWindow->getWindow()->windowTitle(), QStringLiteral("Evening Forest Info[*]"));
    gCurrentWorld->setName(QString());
    gGetInfoWindow->updateDisplay();
    EXPECT_EQ(gGetInfoWindow->getWindow()->windowTitle(), QStringLiteral("Untitled World Info[*]"));
}

// Pixels near white, of the picture's own colour, and darker than it, in a band of rows of the view.
struct Seen {
    int white = 0;
    int picture = 0;
    int shadow = 0;
};
Seen look(const QImage& image, int top, int bottom, QColor pictureColor, int right = 0) {
    Seen seen;
    for (int y = top; y < bottom; ++y) {
        for (int x = 0; x < (right > 0 ? right : image.width()); ++x) {
            const QColor c = image.pixelColor(x, y);
            if (c.red() > 235 && c.green() > 235 && c.blue() > 235) ++seen.white;
            if (c.rgb() == pictureColor.rgb()) ++seen.picture;
            if (c.value() + 30 < pictureColor.value()) ++seen.shadow;
        }
    }
    return seen;
}

TEST_F(GetInfoWindowTest, TextsAreDrawnOverThePictureAndSlideAway) {
    const QColor green = GREEN;
    showWorldWith(QStringLiteral("Crickets, a slow creek and owls."));
    ASSERT_EQ(imageView()->size(), QSize(400, 300));

    const QImage shown = imageView()->grab().toImage();
    const Seen name = look(shown, 21, 66, green);        // the name's line
    const Seen gap = look(shown, 280, 300, green, 300);  // the bottom edge left of the button
    EXPECT_GT(name.white, 300);
    EXPECT_GT(name.shadow, 100);  // the soft shadow darkens the picture beside the letters
    EXPECT_EQ(gap.white, 0);
    EXPECT_GT(look(shown, 180, 225, green).white, 100);  // the description

    gGetInfoWindow->handleCommand(TINF);
    slideToTheEnd();
    const QImage away = imageView()->grab().toImage();
    EXPECT_EQ(look(away, 0, 250, green).white, 0);
    EXPECT_EQ(look(away, 0, 250, green).picture, 400 * 250);
}

// Each slide step repaints only where the texts and their shadows were and are: what is on the
// screen after a few steps (the backing store, painted step by step) is what a whole repaint of
// that moment draws, so no shadow or letter is left behind.
TEST_F(GetInfoWindowTest, EachSlideStepLeavesNothingBehind) {
    showWorldWith(QStringLiteral("Crickets, a slow creek and owls, frogs by the water, a far dog."));
    QWidget* view = imageView();
    const QRect inWindow(view->mapTo(view->window(), QPoint(0, 0)), view->size());
    const auto onScreen = [&] {
        return QGuiApplication::primaryScreen()->grabWindow(view->window()->winId()).toImage().copy(inWindow).convertToFormat(QImage::Format_RGB32);
    };

    gGetInfoWindow->handleCommand(TINF);
    for (int step = 1; step <= 20; ++step) {
        gGetInfoWindow->scrollTextTimer();
        settle();
        if (step % 5 != 0) continue;
        SCOPED_TRACE(step);
        EXPECT_EQ(onScreen(), view->grab().toImage().convertToFormat(QImage::Format_RGB32));
    }
}

}  // namespace
}  // namespace sylvora::test
