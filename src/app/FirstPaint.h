#pragma once

#include <QObject>

#include <functional>

class QWidget;

namespace tambrel {

/// Calls a function once, when a window has been painted for the first time, so that slow work comes after
/// what the user waits for. A window that is not painted within a quarter of a second (it may be minimized)
/// counts as painted then. Main thread.
class FirstPaint : public QObject {
public:
    FirstPaint(QWidget& window, std::function<void()> then);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void happen();
    std::function<void()> then_;
};

} // namespace tambrel
