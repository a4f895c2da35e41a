#pragma once

#include <QString>

namespace tambrel {

struct ApplicationInfo;

// The texts of the About / Get Info panel that are the same in every run. Any thread.

[[nodiscard]] QString versionText(const ApplicationInfo& info);
[[nodiscard]] QString creditsText(const QString& builtOn);
/// Every key and what it does, one a line.
[[nodiscard]] QString keysText();
/// Its paragraphs, unwrapped.
[[nodiscard]] QString licenceText();

} // namespace tambrel
