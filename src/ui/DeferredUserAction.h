#pragma once

#include "TambrelBetaLog.h"

#include <QMetaObject>
#include <QObject>

#include <string_view>
#include <utility>

namespace tambrel {

/// Logs what the user did with a view, once the present event has been handled. `function` is a literal; a
/// callable message is composed only then. Main thread; `log` outlives the view.
template<LogText Message>
void deferUserAction(TambrelBetaLog& log, QObject& view, Message message, std::string_view function) {
    if (!log.diagnosticsEnabled())
        return;
    auto entry = [&log, message = std::move(message), function] { log.userAction(message, function); };
    QMetaObject::invokeMethod(&view, std::move(entry), Qt::QueuedConnection);
}

} // namespace tambrel
