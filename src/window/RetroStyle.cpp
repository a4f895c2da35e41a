#include "RetroStyle.h"

#include "RetroTheme.h"

#include <QPalette>

namespace tambrel {

RetroStyle::RetroStyle() : QProxyStyle("Fusion") {}

void RetroStyle::polish(QPalette& palette) {
    palette = RetroTheme::palette();
}

QPalette RetroStyle::standardPalette() const {
    return RetroTheme::palette();
}

QIcon RetroStyle::standardIcon(StandardPixmap icon, const QStyleOption* option, const QWidget* widget) const {
    return icon == SP_ToolBarHorizontalExtensionButton ? QIcon()
                                                       : QProxyStyle::standardIcon(icon, option, widget);
}

} // namespace tambrel
