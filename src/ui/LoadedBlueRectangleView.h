#pragma once

#include <QWidget>

namespace tambrel {

/// A filled rectangle while a file is loaded; otherwise transparent. Main thread.
class LoadedBlueRectangleView : public QWidget {
    Q_OBJECT

public:
    explicit LoadedBlueRectangleView(QWidget* parent = nullptr);

    [[nodiscard]] bool isLoaded() const { return isLoaded_; }
    void setLoaded(bool loaded);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool isLoaded_ = false;
};

} // namespace tambrel
