#pragma once

#include "RetroTheme.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QPaintEvent>
#include <QPixmap>
#include <QScreen>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <set>
#include <utility>

namespace tambrel {

/// Follows how a view is painted on the screen.
class ShownView : public QObject {
public:
    /// Shows the view for the test.
    ShownView(QWidget& view, QSize size) : ShownView(shown(view, size)) {}
    /// A view that is shown already.
    explicit ShownView(QWidget& view) : view_(view) {
        QCoreApplication::processEvents();
        view.installEventFilter(this);
        for (QWidget* child : view.findChildren<QWidget*>())
            child->installEventFilter(this);
    }

    /// How often the paint events that are due paint it; a picture taken meanwhile does not count.
    int paints() {
        paints_ = 0;
        QCoreApplication::processEvents();
        return paints_;
    }
    /// What they paint of it and its children; empty when there are none.
    [[nodiscard]] QRegion due() {
        painted_ = {};
        return taken();
    }
    /// The same, and what has been painted since the last call.
    [[nodiscard]] QRegion taken() {
        QCoreApplication::processEvents();
        return std::exchange(painted_, {});
    }

    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            const auto& part = *static_cast<QWidget*>(object);
            paints_ += &part == &view_ ? 1 : 0;
            painted_ += static_cast<QPaintEvent*>(event)->region().translated(part.mapTo(&view_, QPoint()));
        }
        return false;
    }

private:
    static QWidget& shown(QWidget& view, QSize size) {
        view.resize(size);
        view.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&view));
        return view;
    }

    QWidget& view_;
    int paints_ = 0;
    QRegion painted_;
};

/// The view as a picture at a scale, on a background that no view uses.
inline QImage picture(QWidget& view, double scale = 1) {
    QImage image((QSizeF(view.size()) * scale).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::red);
    view.render(&image, {}, {}, QWidget::DrawChildren);
    return image;
}

/// What the screen shows of a view of its own window: the sum of its repaints so far.
[[nodiscard]] inline QImage onScreen(const QWidget& view) {
    return view.screen()->grabWindow(view.winId()).toImage().convertToFormat(QImage::Format_RGB32);
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

/// Whether a picture has no half-tones: every pixel has one of the colours.
[[nodiscard]] inline bool showsOnly(const QImage& image, std::initializer_list<QColor> palette) {
    return std::ranges::all_of(colors(image), [&](QRgb pixel) {
        return std::ranges::any_of(palette, [&](const QColor& color) { return looksLike(pixel, color); });
    });
}

} // namespace tambrel
