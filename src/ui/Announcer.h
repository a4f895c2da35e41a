#pragma once

#include <QWidget>

namespace tambrel {

/// Has assistive software say what happens, whatever has the focus. Invisible. Main thread.
class Announcer : public QWidget {
    Q_OBJECT

public:
    explicit Announcer(QWidget* parent);

    void say(const QString& text);

signals:
    /// For each text, whether or not assistive software listens.
    void said(const QString& text);
};

} // namespace tambrel
