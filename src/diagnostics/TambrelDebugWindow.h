#pragma once

#include <string>
#include <string_view>

namespace tambrel {

/// The window that shows the log's lines as they are made. Main thread; texts are UTF-8.
class TambrelDebugWindow {
public:
    virtual ~TambrelDebugWindow() = default;

    /// Adds to the end of the text, newlines being the caller's, and scrolls there. Works while the window is
    /// hidden, and takes the same time however long the text is.
    virtual void append(std::string_view text) = 0;
    [[nodiscard]] virtual std::string text() const = 0;
    /// Shows the window, in front of the others and with the keyboard's focus.
    virtual void showInFront() = 0;
};

} // namespace tambrel
