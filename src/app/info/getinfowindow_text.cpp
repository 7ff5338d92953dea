// The Get Info window's texts: their sizes and places, their styles and layouts, and the one image
// of texts and shadow that every paint, and every step of the slide, copies.

#include <QPainter>
#include <QTextLayout>
#include <algorithm>

#include "app/info/getinfowindow.h"
#include "app/info/softshadow.h"

namespace sylvora::app {

namespace {

// A world's texts come from a property list and may hold line breaks, written the Mac's way (a bare
// carriage return) as often as the others: the description keeps them as forced breaks, the
// one-line texts turn them into spaces.
QString withNewlines(QString text) {
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    return text;
}

QString asParagraph(const QString& text) { return withNewlines(text).replace(QLatin1Char('\n'), QChar::LineSeparator); }

QString asOneLine(const QString& text) { return withNewlines(text).replace(QLatin1Char('\n'), QLatin1Char(' ')); }

// Where `image` is not clear inside `area`, both in the image's logical pixels.
QRectF inkWithin(const QImage& image, const QRectF& area) {
    const qreal ratio = image.devicePixelRatio();
    const QRect pixels = QRectF(area.topLeft() * ratio, area.size() * ratio).toAlignedRect() & image.rect();
    int left = pixels.right() + 1, right = -1, top = -1, bottom = -1;
    for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = pixels.left(); x <= pixels.right(); ++x) {
            if (qAlpha(row[x]) == 0) continue;
            left = std::min(left, x);
            right = std::max(right, x);
            if (top < 0) top = y;
            bottom = y;
        }
    }
    if (bottom < 0) return {};
    return {left / ratio, top / ratio, (right - left + 1) / ratio, (bottom - top + 1) / ratio};
}

}  // namespace

InfoTextMetrics GetInfoWindow::getTextMetrics(double height, const FontRatios& ratios) {
    InfoTextMetrics m;
    m.ratios = ratios;
    m.nameSize = NAME_FONT_SIZE_PERCENTAGE * height;
    m.authorSize = AUTHOR_FONT_SIZE_PERCENTAGE * height;
    m.descriptionSize = DESCRIPTION_FONT_SIZE_PERCENTAGE * height;
    m.lineHeight = m.descriptionSize * (ratios.ascent + ratios.descent + ratios.leading);
    m.nameBaseline = NAME_DISTANCE_FROM_TOP * height + ratios.ascent * m.nameSize;
    m.authorBaseline = AUTHOR_DISTANCE_FROM_TOP * height + ratios.ascent * m.authorSize;
    // The middle of the space below the author's line, which ends at 0.25 + 0.09 of the height.
    const double fromBottom = (height - (AUTHOR_DISTANCE_FROM_TOP + AUTHOR_FONT_SIZE_PERCENTAGE) * height) * 0.5;
    m.descriptionCentre = height - fromBottom;
    return m;
}

std::unique_ptr<InfoTextStyle> GetInfoWindow::createATSUIStyle(double size) const {
    if (!(size > 0.0)) return nullptr;
    auto style = std::make_unique<InfoTextStyle>();
    style->font = QFont(fontRef.familyName());
    style->font.setStyleName(fontRef.styleName());
    style->font.setWeight(static_cast<QFont::Weight>(fontRef.weight()));
    style->font.setStyle(fontRef.style());
    style->font.setPixelSize(REFERENCE_PIXEL_SIZE);
    // Hinting would fit the outlines to the reference size's pixels, not to the size drawn.
    style->font.setHintingPreference(QFont::PreferNoHinting);
    style->scale = size / REFERENCE_PIXEL_SIZE;
    style->color = QColor::fromRgba64(TEXT_COLOR[0], TEXT_COLOR[1], TEXT_COLOR[2]);
    return style;
}

std::unique_ptr<QTextLayout> GetInfoWindow::createATSUILayout(const InfoTextStyle* style, double lineWidth,
                                                              double flush, const QString& text) {
    if (style == nullptr || text.isEmpty() || !(lineWidth > 0.0)) return nullptr;
    auto layout = std::make_unique<QTextLayout>(text, style->font);
    QTextOption option;
    option.setAlignment(flush < 0.25 ? Qt::AlignLeft : flush > 0.75 ? Qt::AlignRight : Qt::AlignHCenter);
    option.setWrapMode(QTextOption::NoWrap);
    layout->setTextOption(option);
    layout->setCacheEnabled(true);
    return layout;
}

namespace {

// Lays out at most `maxLines` lines of `lineWidth`; true when text is left over after them.
bool layOutLines(QTextLayout& layout, double lineWidth, int maxLines, int& lines) {
    lines = 0;
    bool more = false;
    layout.beginLayout();
    for (;;) {
        QTextLine line = layout.createLine();
        if (!line.isValid()) break;
        if (lines == maxLines) {
            more = true;
            break;
        }
        line.setLineWidth(lineWidth);
        line.setPosition(QPointF(0.0, 0.0));
        ++lines;
    }
    layout.endLayout();
    return more;
}

bool endsAWord(const QString& text, qsizetype at) { return at >= text.size() || text.at(at).isSpace(); }

}  // namespace

int GetInfoWindow::breakDescriptionLines(QTextLayout& layout, double lineWidth) {
    QTextOption option = layout.textOption();
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    const int maxLines = MAX_DESCRIPTION_SOFT_BREAKS + 1;
    int lines = 0;
    if (!layOutLines(layout, lineWidth, maxLines, lines)) return lines;

    // Too long: the last line ends with an ellipsis after the last whole word that leaves it room,
    // so the text stops between words rather than in one.
    const QString full = layout.text();
    const qsizetype lastLineStart = layout.lineAt(lines - 1).textStart();
    qsizetype end = lastLineStart + layout.lineAt(lines - 1).textLength();
    static const QString TRAILING = QStringLiteral(" \t\n,;:.!?-\u2013\u2014");
    while (end > lastLineStart) {
        qsizetype cut = end - 1;
        while (cut > lastLineStart && !(endsAWord(full, cut) && !full.at(cut - 1).isSpace())) --cut;
        // One word wider than the line: it is cut where the ellipsis fits.
        if (cut == lastLineStart) cut = end - 1;
        qsizetype kept = cut;
        while (kept > 0 && TRAILING.contains(full.at(kept - 1))) --kept;
        layout.setText(full.left(kept) + QChar(0x2026));
        if (!layOutLines(layout, lineWidth, maxLines, lines)) return lines;
        end = cut;
    }
    layout.setText(QString(QChar(0x2026)));
    layOutLines(layout, lineWidth, maxLines, lines);
    return lines;
}

// Draws the texts in white, without shadow, into a view of width x height; returns the area each
// line covers.
std::vector<QRectF> GetInfoWindow::paintTexts(QPainter& painter, double width, double height) {
    const InfoTextMetrics m = getTextMetrics(height, fontRatios);
    if (!nameStyle) nameStyle = createATSUIStyle(m.nameSize);
    if (!authorStyle) authorStyle = createATSUIStyle(m.authorSize);
    if (!descriptionStyle) descriptionStyle = createATSUIStyle(m.descriptionSize);

    std::vector<QRectF> covered;
    // A line is laid out at the reference size, so the painter scales it to the size drawn and
    // puts its own baseline (its top plus its ascent) on the wanted one.
    const auto drawLine = [&](const QTextLine& line, const InfoTextStyle& style, double baseline) {
        painter.save();
        painter.scale(style.scale, style.scale);
        painter.setPen(style.color);
        const QPointF at(0.0, baseline / style.scale - line.y() - line.ascent());
        line.draw(&painter, at);
        const QRectF drawn = line.naturalTextRect().translated(at);
        covered.emplace_back(drawn.topLeft() * style.scale, drawn.size() * style.scale);
        painter.restore();
    };
    const auto drawOneLine = [&](const QString& text, const InfoTextStyle* style, double baseline) {
        const auto layout = createATSUILayout(style, width / (style ? style->scale : 1.0), 0.5, asOneLine(text));
        if (!layout) return;
        layout->beginLayout();
        QTextLine line = layout->createLine();
        if (line.isValid()) line.setLineWidth(width / style->scale);
        layout->endLayout();
        if (line.isValid()) drawLine(line, *style, baseline);
    };
    drawOneLine(name, nameStyle.get(), m.nameBaseline);
    drawOneLine(author, authorStyle.get(), m.authorBaseline);

    if (const InfoTextStyle* style = descriptionStyle.get()) {
        const auto layout = createATSUILayout(style, width / style->scale, 0.5, asParagraph(description));
        if (layout) {
            const int lines = breakDescriptionLines(*layout, width / style->scale);
            for (int i = 0; i < lines; ++i) drawLine(layout->lineAt(i), *style, m.descriptionBaseline(i, lines));
        }
    }
    return covered;
}

void GetInfoWindow::discardTextCache() {
    nameStyle.reset();
    authorStyle.reset();
    descriptionStyle.reset();
    textImageValid = false;
    textImage = QImage();
}

void GetInfoWindow::renderTextImage(QSize size, qreal pixelRatio) {
    textImageValid = true;
    textImageSize = size;
    textImageRatio = pixelRatio;
    textImage = QImage();
    textBounds = QRect();
    textRegion = QRegion();
    if (size.isEmpty()) return;
    const double height = size.height();

    QImage glyphs((QSizeF(size) * pixelRatio).toSize(), QImage::Format_ARGB32_Premultiplied);
    glyphs.setDevicePixelRatio(pixelRatio);
    glyphs.fill(Qt::transparent);
    QPainter painter(&glyphs);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    const std::vector<QRectF> lines = paintTexts(painter, size.width(), height);
    painter.end();

    const double blur = SHADOW_BLUR_PERCENTAGE * height;
    const QPointF offset(SHADOW_OFFSET_PERCENTAGE[0] * height, -SHADOW_OFFSET_PERCENTAGE[1] * height);
    const double reach = softShadowReach(blur * pixelRatio) / pixelRatio + 1.0;
    // The lines with their shadows make a few bands with clear picture between them (the name and
    // author at the top, a short description lower down); a slide step repaints only the bands.
    // Each band is the ink the line left, found around it since glyphs may overhang their advance,
    // and its shadow's reach.
    for (const QRectF& line : lines) {
        const QRectF ink = inkWithin(glyphs, line.adjusted(-line.height(), -line.height() / 2, line.height(), line.height() / 2));
        if (ink.isEmpty()) continue;
        const QRect band = ink.adjusted(-reach, -reach, reach + offset.x(), reach + offset.y()).toAlignedRect();
        textRegion += band & QRect(QPoint(0, 0), size);
    }
    textBounds = textRegion.boundingRect();
    if (textBounds.isEmpty()) return;
    const QRect pixels(textBounds.topLeft() * pixelRatio, textBounds.size() * pixelRatio);
    QImage block = glyphs.copy(pixels);
    block.setDevicePixelRatio(1.0);
    const QColor shadowColor = QColor::fromRgbF(SHADOW_COLOR[0], SHADOW_COLOR[1], SHADOW_COLOR[2], SHADOW_COLOR[3]);
    const QImage shadow = makeSoftShadow(block, blur * pixelRatio, shadowColor);
    textImage = QImage(pixels.size(), QImage::Format_ARGB32_Premultiplied);
    textImage.fill(Qt::transparent);
    painter.begin(&textImage);
    painter.drawImage(offset * pixelRatio, shadow);
    painter.drawImage(0, 0, block);
    painter.end();
    textImage.setDevicePixelRatio(pixelRatio);
}

void GetInfoWindow::drawText(QPainter& painter, const QRect& rect) {
    const qreal ratio = painter.device()->devicePixelRatioF();
    if (!textImageValid || textImageSize != rect.size() || textImageRatio != ratio) renderTextImage(rect.size(), ratio);
    if (!textImage.isNull()) painter.drawImage(rect.topLeft() + textBounds.topLeft(), textImage);
}

}  // namespace sylvora::app
