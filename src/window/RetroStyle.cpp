#include "RetroStyle.h"

#include "RetroTheme.h"

#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QPalette>
#include <QStyleOption>

namespace tambrel {

RetroStyle::RetroStyle() : QProxyStyle("Fusion") {}

void RetroStyle::polish(QPalette& palette) {
    palette = RetroTheme::palette();
}

void RetroStyle::polish(QWidget* widget) {
    QProxyStyle::polish(widget);
    if (qobject_cast<QMenuBar*>(widget) == nullptr && qobject_cast<QMenu*>(widget) == nullptr)
        return;
    QFont font = QApplication::font(widget);
    font.setFamilies(RetroTheme::mono().families());
    widget->setFont(font);
}

void RetroStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                             const QWidget* widget) const {
    if (element != CE_MenuBarItem && element != CE_MenuBarEmptyArea)
        return QProxyStyle::drawControl(element, option, painter, widget);
    const bool isOpen = option->state & State_Selected && option->state & State_Sunken;
    painter->fillRect(option->rect, isOpen ? RetroTheme::activeFill() : RetroTheme::paper());
    if (const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option))
        drawItemText(painter, item->rect, Qt::AlignCenter | Qt::TextShowMnemonic | Qt::TextSingleLine,
                     item->palette, item->state & State_Enabled, item->text,
                     isOpen ? QPalette::HighlightedText : QPalette::WindowText);
}

QPalette RetroStyle::standardPalette() const {
    return RetroTheme::palette();
}

QIcon RetroStyle::standardIcon(StandardPixmap icon, const QStyleOption* option, const QWidget* widget) const {
    return icon == SP_ToolBarHorizontalExtensionButton ? QIcon()
                                                       : QProxyStyle::standardIcon(icon, option, widget);
}

} // namespace tambrel
