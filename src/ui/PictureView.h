#pragma once

#include <QIcon>
#include <QWidget>

#include <memory>

class QSvgRenderer;

namespace tambrel {

/// Shows a drawing of the resources in its whole area, sharp at every scale. It is read when it is first
/// painted. Main thread.
class PictureView : public QWidget {
    Q_OBJECT

public:
    explicit PictureView(QString resource, QWidget* parent = nullptr);
    ~PictureView() override;

    /// A square drawing as an icon. Needs none of Qt's plugins, which a distribution may keep in another
    /// package.
    [[nodiscard]] static QIcon icon(const QString& resource);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString resource_;
    std::unique_ptr<QSvgRenderer> picture_;
};

} // namespace tambrel
