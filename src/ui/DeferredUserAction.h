#pragma once

#include <QMetaObject>
#include <QObject>

#include <functional>
#include <string_view>
#include <type_traits>
#include <utility>

namespace tambrel {

/// Told what the user did with a view, and in which procedure of the view. Empty: nobody wants to know.
using UserActionLog = std::function<void(std::string_view action, std::string_view procedure)>;

/// Tells `log` of the action once the present event has been handled. `procedure` is a literal; `action` is a
/// literal, or a callable that composes it and is called only then. Main thread.
template<class Action>
void deferUserAction(const UserActionLog& log, QObject& view, Action action, std::string_view procedure) {
    if (!log)
        return;
    auto entry = [log, action = std::move(action), procedure] {
        if constexpr (std::is_invocable_v<const Action&>)
            log(action(), procedure);
        else
            log(action, procedure);
    };
    QMetaObject::invokeMethod(&view, std::move(entry), Qt::QueuedConnection);
}

} // namespace tambrel
