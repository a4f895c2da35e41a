#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

namespace tambrel {

/// The look of the whole program: pale cyan paper, black ink, monospaced type. Each member is made once, on
/// first use, and never changes. Main thread, and the fonts not before the QGuiApplication exists.
namespace RetroTheme {

[[nodiscard]] const QColor& paper();        ///< Background of the window and of the views.
[[nodiscard]] const QColor& panel();        ///< Face of panels and buttons, track of the timeline.
[[nodiscard]] const QColor& ink();          ///< Lines, borders, text, shadows.
[[nodiscard]] const QColor& activeFill();   ///< Areas that are filled because they are active.
[[nodiscard]] const QColor& blueShadow();   ///< Translucent; no view draws with it at present.
[[nodiscard]] const QColor& darkBlueFill(); ///< Drop panel and loaded indicator; today the paper's colour.

/// What Qt's own controls are drawn in.
[[nodiscard]] const QPalette& palette();

/// Ink at an alpha of 0 to 1.
[[nodiscard]] QColor ink(double alpha);

[[nodiscard]] const QFont& mono();     ///< 14 pixels, regular.
[[nodiscard]] const QFont& small();    ///< 10 pixels, regular.
[[nodiscard]] const QFont& display();  ///< 12 pixels, semibold.
[[nodiscard]] const QFont& title();    ///< 18 pixels, medium.
[[nodiscard]] const QFont& songName(); ///< 24 pixels, semibold.
[[nodiscard]] const QFont& module();   ///< The same object as display().

/// The font as it draws this text: with the letters of other scripts joined, accents and emoji put together.
[[nodiscard]] QFont shaping(QFont font, const QString& text);

/// The monospaced face at a size in logical pixels, for what no member above fits.
[[nodiscard]] QFont monospaced(int pixels, QFont::Weight weight = QFont::Normal);

} // namespace RetroTheme
} // namespace tambrel
