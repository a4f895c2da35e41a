#pragma once

#include "ApplicationInfo.h"

#include <QDialog>

#include <string>

namespace tambrel {

/// What the About / Get Info panel says besides the licence.
struct AboutFacts {
    ApplicationInfo info;
    std::string builtOn;   ///< The libraries and their versions.
    std::string soundBank; ///< Its path, or why there is none.
};

/// The About / Get Info panel: one window beside the main window, which blocks nothing. All its texts can be
/// reached, selected and copied by keyboard; Escape closes it. Main thread.
class TambrelAboutPanel : public QDialog {
public:
    /// Shows the owner's panel in front, with these facts.
    static void show(QWidget& owner, const AboutFacts& facts);

private:
    TambrelAboutPanel(QWidget& owner, const AboutFacts& facts);
};

} // namespace tambrel
