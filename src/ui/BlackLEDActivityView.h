#pragma once

#include <QBasicTimer>
#include <QWidget>

#include <array>
#include <optional>

namespace tambrel {

/// One bar of the activity view, in unflipped coordinates.
struct BlackLEDBar {
    QRectF rect;
    double alpha = 0; ///< Of the ink.

    static constexpr int count = 18;
    static constexpr int phaseCount = 7; ///< The pattern repeats after so many steps.

    /// The bars from left to right at a step of the animation, 0 to 6, or at rest.
    [[nodiscard]] static std::array<BlackLEDBar, count> row(QSizeF size, std::optional<int> phase);
};

/// A row of bars that dance while music plays, a step each 0.08 seconds, and lie low and faint otherwise.
/// Main thread.
class BlackLEDActivityView : public QWidget {
    Q_OBJECT

public:
    explicit BlackLEDActivityView(QWidget* parent = nullptr);

    [[nodiscard]] bool isAnimating() const { return timer_.isActive(); }

    /// Starting shows at the first step and always begins at phase 0; stopping shows at once.
    void setAnimating(bool animating);

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    QBasicTimer timer_; // Active while animating.
    int phase_ = 0;
};

} // namespace tambrel
