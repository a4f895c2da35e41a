#pragma once

#include "TambrelBetaLog.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace tambrel {

/// A debugging window that hands on what it is to show.
class RecordingWindow : public TambrelDebugWindow {
public:
    using Sink = std::function<void(const std::string& line)>;

    /// What makes such windows.
    static auto maker(Sink sink) {
        return [sink = std::move(sink)](TambrelBetaLog&) { return std::make_unique<RecordingWindow>(sink); };
    }

    explicit RecordingWindow(Sink sink) : sink_(std::move(sink)) {}

    void append(std::string_view text) override {
        text_ += text;
        sink_(std::string(text));
    }
    [[nodiscard]] std::string text() const override { return text_; }
    void showInFront() override {}

private:
    Sink sink_;
    std::string text_;
};

} // namespace tambrel
