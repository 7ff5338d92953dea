#pragma once

// A line of text that acts as a web link: underlined and blue, red while the mouse is pressed on
// it, and like a push button it acts only when the mouse is released on it. A pointing hand shows
// over it. Escape while pressed lets go without acting.

#include <QLabel>
#include <QRgb>

namespace sylvora::app {

class LinkLabel : public QLabel {
    Q_OBJECT
public:
    explicit LinkLabel(QWidget* parent = nullptr);

    // The link style: underlined, centred, in `color`; the font's family and size stay as set.
    void setLinkColor(QRgb color);
    QRgb linkColor() const;

Q_SIGNALS:
    // Pressed and released on the link.
    void hit();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void track(bool nowInside);
    void endTracking();

    bool tracking = false;
    bool inside = false;
};

}  // namespace sylvora::app
