#pragma once

#include <QProxyStyle>

namespace tambrel {

/// How Qt's own controls look in every window of the program: Fusion in the theme's colours, whatever style
/// and palette the desktop has, now or later. Main thread.
class RetroStyle : public QProxyStyle {
public:
    RetroStyle();

    /// Qt asks for every palette that the desktop names, the one of a single class of widgets too.
    void polish(QPalette& palette) override;
    /// Menus in the theme's typeface, in the size that the desktop has for them.
    void polish(QWidget* widget) override;
    using QProxyStyle::polish;
    [[nodiscard]] QPalette standardPalette() const override;

    /// The menu bar lies on the window's paper, without a line of its own; an open menu's title is inverted.
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;

    /// None for one icon that every menu bar asks for when it is made: what it shows where its entries do not
    /// fit. To read it Qt would first load every image format it knows; our menu bar has a drawn arrow
    /// instead.
    [[nodiscard]] QIcon standardIcon(StandardPixmap icon, const QStyleOption* option,
                                     const QWidget* widget) const override;
};

} // namespace tambrel
