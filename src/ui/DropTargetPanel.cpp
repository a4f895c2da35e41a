#include "DropTargetPanel.h"

#include "LocalPath.h"
#include "RetroTheme.h"
#include "TambrelMIDIFileSupport.h"
#include "UnflippedPainter.h"
#include "ViewAccessibility.h"

#include <QDropEvent>
#include <QLineF>
#include <QMimeData>
#include <QPolygonF>

#include <algorithm>
#include <cmath>

namespace tambrel {
namespace {

constexpr double dashLength = 8;
constexpr double gapLength = 6;

/// The first of the files dragged, in the order of their source; empty when there is none.
QUrl firstFile(const QMimeData& dragged) {
    const QList<QUrl> urls = dragged.urls();
    const auto file = std::ranges::find_if(urls, &QUrl::isLocalFile);
    return file != urls.end() ? *file : QUrl();
}

// A source that can only move its file would delete it.
bool canCopy(const QDropEvent& event) {
    return event.possibleActions().testFlag(Qt::CopyAction);
}

// Copies, whatever the source proposes: told that its file was moved, a file manager would delete it.
void accept(QDropEvent& event) {
    event.setDropAction(Qt::CopyAction);
    event.accept();
}

// Tells the source that no action is done.
void refuse(QDropEvent& event) {
    event.setDropAction(Qt::IgnoreAction);
    event.ignore();
}

// The dashes from one corner to the next: the first begins in the corner, the last ends before the next.
// Where no whole number of them fits, they are stretched a little.
void strokeSide(UnflippedPainter& painter, const QLineF& side, double half) {
    const double count = std::max(std::round(side.length() / (dashLength + gapLength)), 1.0);
    const double dash = dashLength / (dashLength + gapLength);
    const bool isUpright = side.dx() == 0;
    for (int i = 0; i < static_cast<int>(count); ++i) {
        const QRectF along = QRectF(side.pointAt(i / count), side.pointAt((i + dash) / count)).normalized();
        painter.fill(isUpright ? along.adjusted(-half, 0, half, 0) : along.adjusted(0, -half, 0, half),
                     RetroTheme::ink());
    }
    painter.fill({side.x1() - half, side.y1() - half, 2 * half, 2 * half}, RetroTheme::ink());
}

// A line of an odd number of device pixels is crisp only half a pixel inside the edges.
void strokeDashed(UnflippedPainter& painter, const QRectF& frame, double thickness) {
    const double pixel = painter.snapped(0.0);
    const double width = painter.snapped(thickness);
    const double inset = std::lround(width / pixel) % 2 == 0 ? 0 : pixel / 2;
    const QRectF line = painter.snapped(frame).adjusted(inset, inset, -inset, -inset);
    const QPolygonF corners(line);
    for (qsizetype i = 0; i < 4; ++i)
        strokeSide(painter, {corners[i], corners[i + 1]}, width / 2);
}

} // namespace

DropTargetPanelGeometry DropTargetPanelGeometry::of(QSizeF size) {
    const QRectF frame = QRectF({0, 0}, size).adjusted(12, 12, -12, -12);
    return {frame, frame.adjusted(2, 2, -2, -2)};
}

DropTargetPanel::DropTargetPanel(QWidget* parent) : RetroPanelView(parent) {
    setAcceptDrops(true);
    makeAccessible<DropTargetPanel, AccessibleView<QAccessible::Grouping>>();
    setAccessibleName("MIDI file drop area");
    setAccessibleDescription("Drop a MIDI file here, or open one from the File menu.");
}

void DropTargetPanel::setLoaded(bool loaded) {
    if (loaded == isLoaded_)
        return;
    isLoaded_ = loaded;
    update();
}

bool DropTargetPanel::acceptsDroppedFile(const QUrl& file) {
    return TambrelMIDIFileSupport::hasExtension(file.fileName().toStdString(),
                                                TambrelMIDIFileSupport::loadableExtensions());
}

void DropTargetPanel::paintEvent(QPaintEvent* event) {
    RetroPanelView::paintEvent(event);
    const auto [frame, loadedFill] = DropTargetPanelGeometry::of(size());
    UnflippedPainter painter(*this);
    if (isLoaded_)
        painter.fill(loadedFill, RetroTheme::darkBlueFill());
    if (!frame.isEmpty())
        strokeDashed(painter, frame, isHovering_ ? 4 : 1);
}

void DropTargetPanel::dragEnterEvent(QDragEnterEvent* event) {
    if (!canCopy(*event) || firstFile(*event->mimeData()).isEmpty())
        return refuse(*event);
    setHovering(true);
    deferUserAction(onUserAction, *this, "Dragged file over MIDI drop panel",
                    "DropTargetPanel.draggingEntered");
    accept(*event);
}

void DropTargetPanel::dragLeaveEvent(QDragLeaveEvent*) {
    setHovering(false);
}

void DropTargetPanel::dropEvent(QDropEvent* event) {
    setHovering(false);
    const QUrl file = firstFile(*event->mimeData());
    constexpr auto procedure = "DropTargetPanel.performDragOperation";
    const bool isHere =
        !localPath(file).empty(); // Another computer's file has a name, but is not to be read.
    if (!canCopy(*event) || !isHere || !acceptsDroppedFile(file)) {
        deferUserAction(onUserAction, *this, "Dropped unsupported file on MIDI drop panel", procedure);
        return refuse(*event);
    }
    const auto message = [file] { return "Dropped MIDI-compatible file " + file.fileName().toStdString(); };
    deferUserAction(onUserAction, *this, message, procedure);
    accept(*event);
    if (onFile)
        onFile(file);
}

void DropTargetPanel::setHovering(bool hovering) {
    if (hovering == isHovering_)
        return;
    isHovering_ = hovering;
    update();
}

} // namespace tambrel
