#include "RetroTheme.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QStringList>

#include <algorithm>
#include <cmath>

namespace tambrel {
namespace {

// Disabled texts as faint as can still be read; what is selected is inverted.
QPalette makePalette() {
    QPalette palette(RetroTheme::ink(), RetroTheme::panel(), RetroTheme::panel(),
                     RetroTheme::paper().darker(150), RetroTheme::paper().darker(120), RetroTheme::ink(),
                     RetroTheme::panel(), RetroTheme::panel(), RetroTheme::paper());
    const QColor faint = RetroTheme::paper().darker(220);
    palette.setColor(QPalette::AlternateBase, RetroTheme::paper());
    palette.setColor(QPalette::ToolTipBase, RetroTheme::panel());
    palette.setColor(QPalette::ToolTipText, RetroTheme::ink());
    palette.setColor(QPalette::PlaceholderText, faint);
    palette.setColor(QPalette::Highlight, RetroTheme::activeFill());
    palette.setColor(QPalette::HighlightedText, RetroTheme::paper());
    palette.setColor(QPalette::Link, RetroTheme::ink());
    palette.setColor(QPalette::LinkVisited, RetroTheme::ink());
    for (const auto role : {QPalette::WindowText, QPalette::ButtonText, QPalette::Text})
        palette.setColor(QPalette::Disabled, role, faint);
    return palette;
}

// Families that bring real medium and semibold weights; others would show regular or bold instead.
QString monospacedFamily() {
    static const QStringList preferred = {"JetBrains Mono", "IBM Plex Mono",   "Fira Code",
                                          "Cascadia Mono",  "Source Code Pro", "Noto Sans Mono"};
    const auto found = std::find_if(preferred.begin(), preferred.end(),
                                    [](const QString& family) { return QFontDatabase::hasFamily(family); });
    return found != preferred.end() ? *found : QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
}

// From letter to letter in whole device pixels: at a fraction of one, each letter's stems look different.
void setWholePixelAdvance(QFont& font) {
    const double scale = qGuiApp->devicePixelRatio();
    const double advance = QFontMetricsF(font).horizontalAdvance('0');
    font.setLetterSpacing(QFont::AbsoluteSpacing, std::round(advance * scale) / scale - advance);
}

} // namespace

const QColor& RetroTheme::paper() {
    static const QColor color = QColor::fromRgbF(0.86f, 0.97f, 0.97f);
    return color;
}

const QColor& RetroTheme::panel() {
    static const QColor color = QColor::fromRgbF(0.91f, 0.99f, 0.99f);
    return color;
}

const QColor& RetroTheme::ink() {
    static const QColor color(Qt::black);
    return color;
}

const QColor& RetroTheme::activeFill() {
    static const QColor color = QColor::fromRgbF(0.05f, 0.05f, 0.05f);
    return color;
}

const QColor& RetroTheme::blueShadow() {
    static const QColor color = QColor::fromRgbF(0.42f, 0.82f, 0.94f, 0.65f);
    return color;
}

const QColor& RetroTheme::darkBlueFill() {
    static const QColor color = QColor::fromRgbF(0.86f, 0.97f, 0.97f);
    return color;
}

const QPalette& RetroTheme::palette() {
    static const QPalette palette = makePalette();
    return palette;
}

QColor RetroTheme::ink(double alpha) {
    QColor color = ink();
    color.setAlphaF(static_cast<float>(alpha));
    return color;
}

const QFont& RetroTheme::mono() {
    static const QFont font = monospaced(14);
    return font;
}

const QFont& RetroTheme::small() {
    static const QFont font = monospaced(10);
    return font;
}

const QFont& RetroTheme::display() {
    static const QFont font = monospaced(12, QFont::DemiBold);
    return font;
}

const QFont& RetroTheme::title() {
    static const QFont font = monospaced(18, QFont::Medium);
    return font;
}

const QFont& RetroTheme::songName() {
    static const QFont font = monospaced(24, QFont::DemiBold);
    return font;
}

const QFont& RetroTheme::module() {
    return display();
}

QFont RetroTheme::shaping(QFont font, const QString& text) {
    static constexpr QChar ellipsis = u'\u2026'; // A cut text looks as it does whole.
    const auto needsShaping = [](QChar letter) { return letter.unicode() > 0x7F && letter != ellipsis; };
    if (std::any_of(text.begin(), text.end(), needsShaping)) {
        font.setStyleStrategy(QFont::PreferDefault);
        font.setLetterSpacing(QFont::AbsoluteSpacing, 0); // Letters that are joined would be torn apart.
    }
    return font;
}

QFont RetroTheme::monospaced(int pixels, QFont::Weight weight) {
    static const QString family = monospacedFamily();
    QFont font(family);
    font.setStyleHint(QFont::Monospace);
    font.setPixelSize(pixels);
    font.setWeight(weight);
    font.setStyleStrategy(QFont::PreferNoShaping); // Typefaces made for programmers join hyphens into a line.
    setWholePixelAdvance(font);
    return font;
}

} // namespace tambrel
