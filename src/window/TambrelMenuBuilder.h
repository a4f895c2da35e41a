#pragma once

#include <functional>

class QMenu;
class QMenuBar;

namespace tambrel {

/// What the menus do that is not Qt's own business.
struct MenuTargets {
    std::function<void()> showAbout;
    std::function<void()> showInfo;
    std::function<void()> showHelp;
    std::function<void()> openFile;
    std::function<void()> playPause;
    std::function<void()> rtz;
    std::function<void()> stop;
    std::function<void()> toggleLoop;
    std::function<bool()> isLooping; ///< What the menu shows when it opens.
    /// Empty: there is no Debug menu.
    std::function<void()> showDebuggingWindow;
};

/// Builds the menus. A key works in every window of the program, but for the space bar, which belongs to the
/// main window and there comes before the control that has the focus. Each menu is the caller's until it is
/// added to a menu bar with `QMenuBar::addMenu` and given a parent. Main thread.
namespace TambrelMenuBuilder {

[[nodiscard]] QMenu* appMenuItem(const MenuTargets& targets);
[[nodiscard]] QMenu* fileMenuItem(const MenuTargets& targets);
[[nodiscard]] QMenu* transportMenuItem(const MenuTargets& targets);
[[nodiscard]] QMenu* debugMenuItem(const MenuTargets& targets);
[[nodiscard]] QMenu* windowMenuItem();
[[nodiscard]] QMenu* helpMenuItem(const MenuTargets& targets);

/// Fills the bar, which takes the menus over.
void install(QMenuBar& bar, const MenuTargets& targets);

} // namespace TambrelMenuBuilder
} // namespace tambrel
