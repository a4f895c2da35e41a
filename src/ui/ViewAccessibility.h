#pragma once

#include <QAccessibleWidget>

namespace tambrel {

/// What assistive software sees of a view that needs a role and nothing more. Main thread.
template<QAccessible::Role viewRole>
class AccessibleView : public QAccessibleWidget {
public:
    explicit AccessibleView(QWidget& view) : QAccessibleWidget(&view, viewRole) {}
};

/// Lets assistive software see each `View` through an `Interface`, which is made from a `View&`. Called from
/// the view's constructor; only the first call counts. `View` needs Q_OBJECT.
template<class View, class Interface>
void makeAccessible() {
    static const bool installed = [] {
        QAccessible::installFactory([](const QString&, QObject* object) -> QAccessibleInterface* {
            auto* view = qobject_cast<View*>(object);
            return view ? new Interface(*view) : nullptr;
        });
        return true;
    }();
    static_cast<void>(installed);
}

} // namespace tambrel
