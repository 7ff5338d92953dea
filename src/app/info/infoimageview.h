#pragma once

// The Get Info window's picture area (control "INFO" 1): draws the world's picture over its whole
// area, keeps the round toggle button in its bottom-right corner, and offers the application's
// menus on a right-click. What it draws and how the window reacts to its size belong to the
// GetInfoWindow that owns it.

#include <QWidget>

namespace sylvora::app {

class GetInfoWindow;

class InfoImageView : public QWidget {
    Q_OBJECT
public:
    static constexpr int BUTTON_MARGIN = 10;

    explicit InfoImageView(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void childEvent(QChildEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    GetInfoWindow* owner() const;
    void placeButtons();
};

}  // namespace sylvora::app
