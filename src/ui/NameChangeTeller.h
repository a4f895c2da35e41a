#pragma once

#include <QBasicTimer>
#include <QObject>

#include <functional>
#include <vector>

class QWidget;

namespace tambrel {

/// Tells assistive software of views whose names change many times a second: of one of them each second at
/// most, in turn, and of each until it has heard the last change. Main thread only.
class NameChangeTeller : public QObject {
public:
    /// Tells of a view; false where nobody listens.
    using Tell = std::function<bool(QWidget& view)>;
    explicit NameChangeTeller(QObject* parent = nullptr, Tell tell = tellNameChanged);

    /// `view` outlives the teller, or its parent is the teller's.
    void noteChange(QWidget& view);

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    void tellNext();

    [[nodiscard]] static bool tellNameChanged(QWidget& view);

    const Tell tell_;
    std::vector<QWidget*> due_;
    QBasicTimer pause_; // Runs for a second after each telling.
};

} // namespace tambrel
