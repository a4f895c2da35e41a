#include "MIDITrackBarsView.h"

#include "PlayheadFraction.h"
#include "RetroTheme.h"
#include "UnflippedPainter.h"
#include "ViewAccessibility.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPaintEvent>
#include <QPainterPath>
#include <QRegion>

#include <algorithm>
#include <utility>

namespace tambrel {
namespace {

constexpr double cornerRadius = 2;
constexpr const char* hint = "Load a MIDI file to see the timeline";

QFont hintFont() {
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(10);
    return font;
}

const QFont& labelFont() {
    static const QFont font = RetroTheme::monospaced(8, QFont::Medium);
    return font;
}

// Whether something so wide may show in what is to be painted: a smoothed edge reaches a pixel further.
bool reaches(const QRectF& area, const QRegion& exposed) {
    return std::any_of(exposed.begin(), exposed.end(), [&](const QRect& part) {
        return area.right() + 1 > part.left() && area.left() - 2 < part.right();
    });
}

void paintLabel(UnflippedPainter& painter, const MIDITrackBarsGeometry::Row& row) {
    const QFontMetricsF metrics(labelFont());
    const QRectF line(row.labelOrigin.x(), row.labelOrigin.y() - metrics.descent(),
                      metrics.horizontalAdvance(row.label), metrics.height());
    painter.text(line, row.label, labelFont(), RetroTheme::ink(0.55), Qt::AlignLeft | Qt::AlignBottom);
}

void paintPhrases(UnflippedPainter& painter, const MIDITrackBarsGeometry::Row& row, const QColor& color,
                  const QRegion& exposed) {
    for (const QRectF& phrase : row.phrases) {
        if (!reaches(phrase, exposed))
            continue;
        QPainterPath path;
        path.addRoundedRect(painter.snapped(phrase), cornerRadius, cornerRadius);
        painter.fill(path, color);
    }
}

} // namespace

MIDITrackBarsView::MIDITrackBarsView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent); // Or each step of the playhead would repaint the window below.
    makeAccessible<MIDITrackBarsView, AccessibleView<QAccessible::Chart>>();
    setAccessibleName("Track bars");
}

void MIDITrackBarsView::setTrackCount(std::int64_t count) {
    if (count == trackCount_)
        return;
    trackCount_ = count;
    layOut();
    update();
}

void MIDITrackBarsView::setLanes(std::vector<MIDITrackPhraseLane> lanes) {
    if (lanes == lanes_)
        return;
    lanes_ = std::move(lanes);
    layOut();
    update();
}

void MIDITrackBarsView::setProgress(double progress) {
    const double shownBefore = shownProgress();
    const QRect columnBefore = playheadColumn();
    progress_ = progress;
    if (hasRows() && shownProgress() != shownBefore)
        update(QRegion(columnBefore) + playheadColumn());
}

void MIDITrackBarsView::paintEvent(QPaintEvent* event) {
    const QRectF bounds = unflippedBounds(*this);
    UnflippedPainter painter(*this);
    painter.fill(bounds, RetroTheme::paper());
    painter.frame(geometry_.border, RetroTheme::ink());
    if (!hasRows())
        return paintHint(painter);
    const QRectF& grid = geometry_.barArea;
    for (const double x : geometry_.gridLines())
        painter.verticalLine(x, grid.y(), grid.y() + grid.height(), RetroTheme::ink(0.16), 0.5);
    paintRows(painter, event->region());
    paintPlayhead(painter);
}

void MIDITrackBarsView::resizeEvent(QResizeEvent*) {
    layOut();
}

double MIDITrackBarsView::shownProgress() const {
    return wholePixelFraction(limitedFraction(progress_), geometry_.barArea.width(), devicePixelRatioF());
}

QRect MIDITrackBarsView::playheadColumn() const {
    const QRectF dot = geometry_.playhead(shownProgress()).dot;
    return QRectF(dot.x() - 1, 0, dot.width() + 2, height()).toAlignedRect();
}

void MIDITrackBarsView::layOut() {
    geometry_ = MIDITrackBarsGeometry::of(size(), lanes_, trackCount_);
    const auto shown = geometry_.rows.size();
    const auto all =
        lanes_.empty() ? static_cast<std::size_t>(std::max<std::int64_t>(trackCount_, 0)) : lanes_.size();
    const QString text = QString("%1 of %2 tracks").arg(shown).arg(all);
    if (const QString said = hasRows() ? text : hint; said != accessibleDescription())
        setAccessibleDescription(said); // Assistive software is told of each that is set.
    setToolTip(shown < all ? text : QString());
}

void MIDITrackBarsView::paintHint(UnflippedPainter& painter) const {
    painter.text(unflippedBounds(*this), hint, hintFont(), RetroTheme::ink(0.35));
}

void MIDITrackBarsView::paintRows(UnflippedPainter& painter, const QRegion& exposed) const {
    const bool areLabelsExposed = exposed.boundingRect().left() < geometry_.barArea.x();
    bool isEven = true;
    for (const auto& row : geometry_.rows) {
        if (areLabelsExposed)
            paintLabel(painter, row);
        if (row.phrases.empty())
            painter.fill(row.strip, RetroTheme::ink(0.12));
        paintPhrases(painter, row, RetroTheme::ink(isEven ? 0.82 : 0.52), exposed);
        isEven = !isEven;
    }
}

void MIDITrackBarsView::paintPlayhead(UnflippedPainter& painter) const {
    const auto [line, dot] = geometry_.playhead(shownProgress());
    const QRectF crispLine = painter.centred(line);
    painter.fill(crispLine, RetroTheme::ink());
    QPainterPath circle;
    circle.addEllipse(dot.translated(crispLine.center().x() - line.center().x(), 0));
    painter.fill(circle, RetroTheme::ink());
}

} // namespace tambrel
