#pragma once

#include "DeferredUserAction.h"
#include "RetroPanelView.h"

#include <QRectF>
#include <QUrl>

#include <functional>

namespace tambrel {

/// Where the drop panel paints what, in unflipped coordinates.
struct DropTargetPanelGeometry {
    QRectF frame;
    QRectF loadedFill;

    [[nodiscard]] static DropTargetPanelGeometry of(QSizeF size);
};

/// The area onto which a MIDI file is dragged, a dashed frame. A drop is accepted for its first file alone,
/// by that file's name; nothing is opened here. Main thread only.
class DropTargetPanel : public RetroPanelView {
    Q_OBJECT

public:
    /// A file was dropped whose name is accepted.
    std::function<void(const QUrl& file)> onFile;
    UserActionLog onUserAction;

    explicit DropTargetPanel(QWidget* parent = nullptr);

    /// Fills the inside of the frame.
    [[nodiscard]] bool isLoaded() const { return isLoaded_; }
    void setLoaded(bool loaded);

    /// True when the file name's extension, in any case, is one that the program loads.
    [[nodiscard]] static bool acceptsDroppedFile(const QUrl& file);

protected:
    void paintEvent(QPaintEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void setHovering(bool hovering);

    bool isLoaded_ = false;
    bool isHovering_ = false; ///< A drag of files is over the panel.
};

} // namespace tambrel
