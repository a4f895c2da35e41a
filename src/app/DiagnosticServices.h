#pragma once

#include "TambrelBetaLogServices.h"

namespace tambrel {

/// The desktop's services for the log of the running program. Cheap: nothing is asked of the desktop before
/// the log needs it. The settings outlive the log. Main thread.
[[nodiscard]] TambrelBetaLogServices diagnosticServices(QSettings& settings);

} // namespace tambrel
