#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <optional>
#include <vector>

class QSettings;

namespace tambrel {

/// Remembers where the main window was and chooses where it opens next: where the user left it, but not off
/// screen. Rectangles are in Qt's screen coordinates, in points, y downwards; everything here is the
/// same upside down, so nothing is turned over. Visible frames are the screens without their bars and docks,
/// in the platform's order. Main thread.
class TambrelWindowPlacementStore {
public:
    static constexpr const char* frameKey = "TambrelMainWindowFrame";

    /// `defaults` outlives the store.
    explicit TambrelWindowPlacementStore(QSettings& defaults) : defaults_(&defaults) {}

    /// Does nothing with an unusable frame.
    void save(const QRectF& frame) const;

    /// The saved place with the size of the window as it is today; nothing when none that is usable was
    /// saved.
    [[nodiscard]] std::optional<QRectF> savedFrame(QSizeF windowSize) const;

    /// The frame that the main window opens with.
    [[nodiscard]] QRectF launchFrame(QSizeF windowSize, const std::vector<QRectF>& visibleFrames) const;

    /// True when all components are finite, and width and height are greater than 0.
    [[nodiscard]] static bool isUsable(const QRectF& frame);

    /// The visible frame that a window belongs to: the first that contains it, else the first of those that
    /// share the largest area with it. Nothing when it lies outside all of them.
    [[nodiscard]] static std::optional<QRectF> bestVisibleFrame(const QRectF& frame,
                                                                const std::vector<QRectF>& visibleFrames);

    /// The frame moved into its best visible frame; centred along an axis on which it is too large. Unchanged
    /// when it is unusable or has no best visible frame.
    [[nodiscard]] static QRectF clamped(const QRectF& frame, const std::vector<QRectF>& visibleFrames);

    /// In the middle of the first usable visible frame; at 0, 0 when there is none.
    [[nodiscard]] static QRectF centeredFrame(QSizeF size, const std::vector<QRectF>& visibleFrames);

private:
    QSettings* defaults_;
};

} // namespace tambrel
