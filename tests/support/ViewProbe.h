#pragma once

#include "RetroTheme.h"

#include <QAbstractEventDispatcher>
#include <QAccessible>
#include <QCoreApplication>
#include <QImage>
#include <QPaintEvent>
#include <QTest>
#include <QTimerEvent>
#include <QWidget>

#include <gtest/gtest.h>

#include <utility>

namespace tambrel {

/// Repaints what is due, and nothing else; time does not pass meanwhile.
inline void paintWhatIsDue(const QWidget& view) {
    QEvent due(QEvent::UpdateRequest);
    QCoreApplication::sendEvent(view.window(), &due);
}

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

    /// How often what is due to be repainted, now and not later, paints it; a picture taken meanwhile does
    /// not count.
    int paints() {
        paints_ = 0;
        paintWhatIsDue(view_);
        return paints_;
    }
    /// What has been painted of it and its children since the last call.
    [[nodiscard]] QRegion taken() {
        paintWhatIsDue(view_);
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

/// The timers that a view runs.
[[nodiscard]] inline auto timersOf(const QObject& view) {
    return QAbstractEventDispatcher::instance()->registeredTimers(const_cast<QObject*>(&view));
}

/// Lets the only timer of a view fire, as the time that passes does.
inline void advance(QObject& view, int times = 1) {
    ASSERT_EQ(timersOf(view).size(), 1);
    for (int i = 0; i < times; ++i) {
        QTimerEvent due(timersOf(view).first().timerId);
        QCoreApplication::sendEvent(&view, &due);
    }
}

} // namespace tambrel
