#pragma once

// The transparent layer over the Get Info window's picture that carries the sliding texts. Every
// mouse event goes through it to the picture and the round button below it; it exists only while
// the window is shown.

#include <QWidget>

namespace sylvora::app {

class GetInfoWindow;

class InfoOverlay : public QWidget {
    Q_OBJECT
public:
    InfoOverlay(GetInfoWindow& owner, QWidget& imageView);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    GetInfoWindow& owner_;
};

}  // namespace sylvora::app
