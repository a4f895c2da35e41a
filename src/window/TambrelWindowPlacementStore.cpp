#include "TambrelWindowPlacementStore.h"

#include "QtText.h"
#include "RectangleText.h"

#include <QSettings>
#include <QString>

#include <algorithm>
#include <cmath>

namespace tambrel {
namespace {

// The start of an extent within the limits, or centred between them when it is longer than they are apart.
double clampedStart(double start, double length, double lowest, double limit) {
    const double highest = limit - length;
    if (highest < lowest)
        return lowest + (highest - lowest) * 0.5;
    return std::clamp(start, lowest, highest);
}

double sharedArea(const QRectF& one, const QRectF& other) {
    const double width = std::min(one.right(), other.right()) - std::max(one.left(), other.left());
    const double height = std::min(one.bottom(), other.bottom()) - std::max(one.top(), other.top());
    return width > 0 && height > 0 ? width * height : 0;
}

} // namespace

void TambrelWindowPlacementStore::save(const QRectF& frame) const {
    if (isUsable(frame))
        defaults_->setValue(frameKey, toQString(rectangleText(frame)));
}

std::optional<QRectF> TambrelWindowPlacementStore::savedFrame(QSizeF windowSize) const {
    const auto frame = rectangleFromText(defaults_->value(frameKey).toString().toStdString());
    if (!frame || !isUsable(*frame))
        return std::nullopt;
    return QRectF(frame->topLeft(), windowSize);
}

QRectF TambrelWindowPlacementStore::launchFrame(QSizeF windowSize,
                                                const std::vector<QRectF>& visibleFrames) const {
    const auto saved = savedFrame(windowSize);
    return saved ? clamped(*saved, visibleFrames) : centeredFrame(windowSize, visibleFrames);
}

bool TambrelWindowPlacementStore::isUsable(const QRectF& frame) {
    return std::isfinite(frame.x()) && std::isfinite(frame.y()) && std::isfinite(frame.width()) &&
           std::isfinite(frame.height()) && frame.width() > 0 && frame.height() > 0;
}

std::optional<QRectF>
TambrelWindowPlacementStore::bestVisibleFrame(const QRectF& frame, const std::vector<QRectF>& visibleFrames) {
    std::optional<QRectF> best;
    double largest = 0;
    for (const QRectF& visible : visibleFrames) {
        if (!isUsable(visible))
            continue;
        if (visible.contains(frame))
            return visible;
        const double area = sharedArea(frame, visible);
        if (area > largest) {
            largest = area;
            best = visible;
        }
    }
    return best;
}

QRectF TambrelWindowPlacementStore::clamped(const QRectF& frame, const std::vector<QRectF>& visibleFrames) {
    if (!isUsable(frame))
        return frame;
    const auto visible = bestVisibleFrame(frame, visibleFrames);
    if (!visible)
        return frame;
    return {clampedStart(frame.x(), frame.width(), visible->left(), visible->right()),
            clampedStart(frame.y(), frame.height(), visible->top(), visible->bottom()), frame.width(),
            frame.height()};
}

QRectF TambrelWindowPlacementStore::centeredFrame(QSizeF size, const std::vector<QRectF>& visibleFrames) {
    const auto visible = std::ranges::find_if(visibleFrames, isUsable);
    if (visible == visibleFrames.end())
        return {{0, 0}, size};
    return {{visible->center().x() - size.width() * 0.5, visible->center().y() - size.height() * 0.5}, size};
}

} // namespace tambrel
