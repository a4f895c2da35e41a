#pragma once

#include <QIcon>
#include <QWidget>

namespace tambrel {

/// Shows a picture of the resources in its whole area, sharp at every scale. It is read when it is first
/// painted.
class PictureView : public QWidget {
    Q_OBJECT

public:
    explicit PictureView(QString resource, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString resource_;
    QIcon picture_;
};

} // namespace tambrel
