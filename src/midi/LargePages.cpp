#include "LargePages.h"

#include <cstdint>
#include <sys/mman.h>
#include <unistd.h>

namespace tambrel {

void preferLargePages(void* block, std::size_t bytes) {
    constexpr std::size_t fewest = std::size_t{8} << 20;
    constexpr std::size_t most = std::size_t{256} << 20; // The kernel would search long for more large pages.
    if (bytes < fewest || bytes > most)
        return;
    static const auto pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t before = reinterpret_cast<std::uintptr_t>(block) % pageSize;
    const std::size_t skipped = before == 0 ? 0 : pageSize - before;
    static_cast<void>(madvise(static_cast<std::byte*>(block) + skipped, bytes - skipped, MADV_HUGEPAGE));
}

} // namespace tambrel
