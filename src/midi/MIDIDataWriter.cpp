#include "MIDIDataWriter.h"

#include "LargePages.h"

#include <algorithm>
#include <new>

namespace tambrel {

MIDIData MIDIDataWriter::finish() {
    const std::size_t written = size();
    reallocate(written);
    position_ = end_ = nullptr;
    const std::shared_ptr<const std::uint8_t> bytes(buffer_.release(), Free{});
    return {bytes, {bytes.get(), written}};
}

void MIDIDataWriter::grow(std::size_t bytes) {
    const std::size_t capacity = static_cast<std::size_t>(end_ - buffer_.get());
    reallocate(std::max(size() + bytes, capacity + capacity / 2));
}

void MIDIDataWriter::reallocate(std::size_t capacity) {
    const std::size_t written = size();
    // realloc moves the pages of a large block to their new place; no standard container can do that.
    auto* const moved =
        static_cast<std::uint8_t*>(std::realloc(buffer_.get(), std::max<std::size_t>(capacity, 1)));
    if (moved == nullptr)
        throw std::bad_alloc();
    static_cast<void>(buffer_.release());
    buffer_.reset(moved);
    preferLargePages(moved, capacity);
    position_ = moved + written;
    end_ = moved + capacity;
}

} // namespace tambrel
