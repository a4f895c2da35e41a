#pragma once

#include "DeferredUserAction.h"

#include <QWidget>

#include <functional>

namespace tambrel {

/// The position bar of the player: the played part, a handle and nine marks. It never moves its handle by
/// itself: `onSeek` has to set the new position. Main thread only; times in seconds.
class RetroTimelineView : public QWidget {
    Q_OBJECT

public:
    /// The user asks for a time from 0 to the duration: by a click or a drag anywhere on the view, with the
    /// arrow keys (5 seconds), Page Up and Page Down (30 seconds), Home or End, or through assistive
    /// software.
    std::function<void(double seconds)> onSeek;
    UserActionLog onUserAction;

    explicit RetroTimelineView(QWidget* parent = nullptr);

    /// 0 or less: nothing is loaded. The timeline is then a mere outline and asks for nothing.
    [[nodiscard]] double duration() const { return duration_; }
    void setDuration(double seconds);

    /// Any value; it shows within 0 and the duration.
    [[nodiscard]] double position() const { return position_; }
    void setPosition(double seconds);

    /// Asks for a time as a click does. Limited to the duration; nothing happens while nothing is loaded.
    void requestSeek(double seconds);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    [[nodiscard]] bool isLoaded() const { return duration_ > 0; }
    [[nodiscard]] double shownFraction() const;
    [[nodiscard]] QRect handleColumn() const;
    void announceValue();

    double duration_ = 0;
    double position_ = 0;
    double announced_ = 0; // The position that assistive software was told of.
};

} // namespace tambrel
