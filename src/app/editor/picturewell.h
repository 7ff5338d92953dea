#pragma once

// The picture well: a framed area that shows the world's picture scaled to fit inside its frame,
// rescales it when the well is resized, outlines itself while a drag holding files hovers over it,
// and hands dropped files to its window.

#include <QFrame>
#include <QImage>
#include <functional>

class QMimeData;

namespace sylvora::app {

class PictureWell : public QFrame {
    Q_OBJECT
public:
    explicit PictureWell(QWidget* parent = nullptr);

    // The picture to show (null: none). The well keeps a copy scaled to its inside.
    void setPicture(const QImage& picture);
    bool hasContent() const { return !content_.isNull(); }
    const QImage& content() const { return content_; }

    // The drag-highlight flag: 1 while a drag holding files hovers over the well, else 0.
    int referenceValue() const { return highlight_; }

    // Takes the files of a drop; false when none was taken.
    std::function<bool(const QMimeData& data)> receiveDrop;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void rescale();

    QImage source_;
    QImage content_;
    int highlight_ = 0;
};

}  // namespace sylvora::app
