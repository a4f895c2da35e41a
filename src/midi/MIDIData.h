#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace tambrel {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

/// One immutable byte buffer: a whole Standard MIDI File or a whole clip. A copy shares the bytes; they
/// live until the last copy is gone. May be read from any thread.
class MIDIData {
public:
    MIDIData() = default;

    /// Takes the bytes over without copying them.
    explicit MIDIData(Bytes&& bytes) {
        auto owner = std::make_shared<const Bytes>(std::move(bytes));
        view_ = *owner;
        owner_ = std::move(owner);
    }

    /// Shares bytes that `owner` keeps alive.
    MIDIData(std::shared_ptr<const void> owner, ByteView bytes) : view_(bytes), owner_(std::move(owner)) {}

    [[nodiscard]] ByteView view() const { return view_; }
    [[nodiscard]] std::size_t size() const { return view_.size(); }
    [[nodiscard]] bool empty() const { return view_.empty(); }
    // A conversion, so that every reader of bytes takes the buffer as it is.
    operator ByteView() const { return view_; }

private:
    ByteView view_;
    std::shared_ptr<const void> owner_;
};

} // namespace tambrel
