#include "DropTargetPanel.h"

#include "DeferredUserAction.h"
#include "RetroTheme.h"
#include "TambrelMIDIFileSupport.h"
#include "UnflippedPainter.h"
#include "ViewAccessibility.h"

#include <QDropEvent>
#include <QMimeData>

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

// Copies, whatever the source proposes: told that its file was moved, a file manager would delete it.
void accept(QDropEvent& event) {
    event.setDropAction(Qt::CopyAction);
    event.accept();
}

// A line of an odd number of device pixels is crisp only half a pixel inside the edges. The first dash begins
// in a corner, which is filled like the other three, where a dash is bent.
void strokeDashed(UnflippedPainter& painter, const QRectF& frame, double thickness) {
    const double pixel = painter.snapped(0.0);
    const double width = painter.snapped(thickness);
    const double inset = std::lround(width / pixel) % 2 == 0 ? 0 : pixel / 2;
    QPen pen(RetroTheme::ink(), width, Qt::CustomDashLine, Qt::FlatCap, Qt::MiterJoin);
    pen.setDashPattern({painter.snapped(dashLength) / width, painter.snapped(gapLength) / width});
    pen.setDashOffset(inset / width);                     // The dashes too end on whole device pixels.
    painter.setRenderHint(QPainter::Antialiasing, false); // Bent dashes would get a soft corner.
    painter.setPen(pen);
    const QRectF centerLine = painter.snapped(frame).adjusted(inset, inset, -inset, -inset);
    painter.drawRect(centerLine);
    painter.fill({centerLine.x() - width / 2, centerLine.y() - width / 2, width, width}, RetroTheme::ink());
}

} // namespace

DropTargetPanelGeometry DropTargetPanelGeometry::of(QSizeF size) {
    const QRectF frame = QRectF({0, 0}, size).adjusted(12, 12, -12, -12);
    return {frame, frame.adjusted(2, 2, -2, -2)};
}

DropTargetPanel::DropTargetPanel(TambrelBetaLog& log, QWidget* parent) : RetroPanelView(parent), log_(log) {
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
    if (firstFile(*event->mimeData()).isEmpty())
        return event->ignore();
    setHovering(true);
    deferUserAction(log_, *this, "Dragged file over MIDI drop panel", "DropTargetPanel.draggingEntered");
    accept(*event);
}

void DropTargetPanel::dragLeaveEvent(QDragLeaveEvent*) {
    setHovering(false);
}

void DropTargetPanel::dropEvent(QDropEvent* event) {
    setHovering(false);
    const QUrl file = firstFile(*event->mimeData());
    constexpr auto procedure = "DropTargetPanel.performDragOperation";
    if (!acceptsDroppedFile(file)) {
        deferUserAction(log_, *this, "Dropped unsupported file on MIDI drop panel", procedure);
        return event->ignore();
    }
    const auto message = [file] { return "Dropped MIDI-compatible file " + file.fileName().toStdString(); };
    deferUserAction(log_, *this, message, procedure);
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
