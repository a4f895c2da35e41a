#pragma once

#include <QProxyStyle>

namespace tambrel {

/// How Qt's own controls look in every window of the program: Fusion in the theme's colours, whatever style
/// and palette the desktop has, now or later.
class RetroStyle : public QProxyStyle {
public:
    RetroStyle();

    /// Qt asks for every palette that the desktop names, the one of a single class of widgets too.
    void polish(QPalette& palette) override;
    using QProxyStyle::polish;
    [[nodiscard]] QPalette standardPalette() const override;

    /// None for one icon that every menu bar asks for when it is made: what it shows where its entries do not
    /// fit. To read it Qt would first load every image format it knows; our menu bar has a drawn arrow
    /// instead.
    [[nodiscard]] QIcon standardIcon(StandardPixmap icon, const QStyleOption* option,
                                     const QWidget* widget) const override;
};

} // namespace tambrel
