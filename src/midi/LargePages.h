#pragma once

#include <cstddef>
#include <memory>
#include <utility>

namespace tambrel {

/// Asks the system to back a block of many megabytes by large pages where it can. Such a block costs one page
/// fault for 2 MB as it is written, not one for 4 KB, and is read with fewer address look-ups. A hint: it
/// changes nothing but the speed, and leaves blocks below 8 and above 256 MB alone. Any thread.
void preferLargePages(void* block, std::size_t bytes);

/// For a vector of many megabytes; what `resize` adds is not initialized. Any thread.
template<class T>
struct LargePageAllocator {
    using value_type = T;

    LargePageAllocator() = default;
    template<class U>
    explicit LargePageAllocator(const LargePageAllocator<U>& /*other*/) {}

    [[nodiscard]] T* allocate(std::size_t count) {
        T* const block = std::allocator<T>().allocate(count);
        preferLargePages(block, count * sizeof(T));
        return block;
    }
    void deallocate(T* block, std::size_t count) { std::allocator<T>().deallocate(block, count); }

    template<class U>
    void construct(U* /*uninitialized*/) noexcept {}
    template<class U, class... Arguments>
    void construct(U* element, Arguments&&... arguments) {
        std::construct_at(element, std::forward<Arguments>(arguments)...);
    }

    bool operator==(const LargePageAllocator&) const = default;
};

} // namespace tambrel
