#pragma once

#include "ViewProbe.h"

#include <QCoreApplication>
#include <QPaintEvent>
#include <QPixmap>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace tambrel {

/// Follows which parts of a shown view are painted on the screen.
class PaintedRegion : public QObject {
public:
    explicit PaintedRegion(QWidget& view) { view.installEventFilter(this); }

    /// What the paint events that are due repaint; empty when there are none.
    [[nodiscard]] QRegion due() {
        painted_ = {};
        QCoreApplication::processEvents();
        return std::exchange(painted_, {});
    }

    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            painted_ += static_cast<QPaintEvent*>(event)->region();
        return false;
    }

private:
    QRegion painted_;
};

/// What the screen shows of a view of its own window: the sum of its repaints so far.
[[nodiscard]] inline QImage onScreen(const QWidget& view) {
    return view.screen()->grabWindow(view.winId()).toImage().convertToFormat(QImage::Format_RGB32);
}

/// Whether a picture has no half-tones: every pixel has one of the colours.
[[nodiscard]] inline bool showsOnly(const QImage& image, std::initializer_list<QColor> palette) {
    return std::ranges::all_of(colors(image), [&](QRgb pixel) {
        return std::ranges::any_of(palette, [&](const QColor& color) { return looksLike(pixel, color); });
    });
}

} // namespace tambrel
