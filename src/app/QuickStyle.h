#pragma once

#include <QProxyStyle>

namespace tambrel {

/// The desktop's style, but for one icon that every menu bar asks for when it is made: what it shows where
/// its entries do not fit. To read it the toolkit would first load every image format it knows; our menu bar
/// has a drawn arrow instead.
class QuickStyle : public QProxyStyle {
public:
    [[nodiscard]] QIcon standardIcon(StandardPixmap icon, const QStyleOption* option,
                                     const QWidget* widget) const override {
        return icon == SP_ToolBarHorizontalExtensionButton ? QIcon()
                                                           : QProxyStyle::standardIcon(icon, option, widget);
    }
};

} // namespace tambrel
