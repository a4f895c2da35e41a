#pragma once

#include "RetroTheme.h"

#include <QAccessible>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace tambrel {

/// Shows a view for a test and counts how often it is painted on the screen.
class ShownView : public QObject {
public:
    ShownView(QWidget& view, QSize size) {
        view.resize(size);
        view.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&view));
        QCoreApplication::processEvents();
        view.installEventFilter(this);
    }

    /// The paint events that are due; a picture taken meanwhile does not count.
    int paints() {
        paints_ = 0;
        QCoreApplication::processEvents();
        return paints_;
    }

    bool eventFilter(QObject*, QEvent* event) override {
        paints_ += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }

private:
    int paints_ = 0;
};

/// The view as a picture at a scale, on a background that no view uses.
inline QImage picture(QWidget& view, double scale = 1) {
    QImage image((QSizeF(view.size()) * scale).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::red);
    view.render(&image, {}, {}, QWidget::DrawChildren);
    return image;
}

inline std::set<QRgb> colors(const QImage& image) {
    std::set<QRgb> found;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            found.insert(image.pixel(x, y));
    return found;
}

/// What a translucent colour looks like on an opaque one, to within a rounding step a channel.
inline bool looksLike(QRgb pixel, const QColor& color, const QColor& background = Qt::black) {
    const auto near = [&](int seen, double front, double back) {
        return std::abs(seen - 255 * (front * color.alphaF() + back * (1 - color.alphaF()))) <= 2;
    };
    return near(qRed(pixel), color.redF(), background.redF()) &&
           near(qGreen(pixel), color.greenF(), background.greenF()) &&
           near(qBlue(pixel), color.blueF(), background.blueF());
}

} // namespace tambrel
