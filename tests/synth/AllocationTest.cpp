#include "PlaybackBuffer.h"
#include "SynthTesting.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <random>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define TAMBREL_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define TAMBREL_SANITIZED 1
#endif
#endif

namespace {

thread_local bool isCounting = false;
thread_local int calls = 0;

} // namespace

#ifndef TAMBREL_SANITIZED
static void count() {
    if (isCounting)
        ++calls;
}

// In place of the C library's, for the whole program, its shared libraries included.
extern "C" {
void* __libc_malloc(std::size_t);                // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(std::size_t, std::size_t);   // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void*, std::size_t);        // NOLINT(bugprone-reserved-identifier)
void* __libc_memalign(std::size_t, std::size_t); // NOLINT(bugprone-reserved-identifier)
void __libc_free(void*);                         // NOLINT(bugprone-reserved-identifier)

void* malloc(std::size_t size) noexcept {
    return count(), __libc_malloc(size);
}
void* calloc(std::size_t number, std::size_t size) noexcept {
    return count(), __libc_calloc(number, size);
}
void* realloc(void* memory, std::size_t size) noexcept {
    return count(), __libc_realloc(memory, size);
}
void* memalign(std::size_t alignment, std::size_t size) noexcept {
    return count(), __libc_memalign(alignment, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return memalign(alignment, size);
}
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) noexcept {
    *memory = memalign(alignment, size);
    return *memory == nullptr ? ENOMEM : 0;
}
void free(void* memory) noexcept {
    count();
    __libc_free(memory);
}
}
#endif

namespace tambrel {
namespace {

using namespace testing;

template<class Work>
int allocationsDuring(Work work) {
    calls = 0;
    isCounting = true;
    work();
    isCounting = false;
    return calls;
}

/// A song with everything, two seconds long.
std::shared_ptr<const Timeline> busySong() {
    TrackBuilder notes;
    for (int note = 0; note < 1000; ++note) {
        const int channel = std::array{0, 1, 9, 5}[static_cast<std::size_t>(note % 4)];
        notes.noteOn(1, channel, 30 + note % 70, 100).noteOff(1, channel, 30 + note * 7 % 70);
    }
    return timeline({randomTrack(3, 2000), notes});
}

TEST(AllocationTest, RenderingNeitherAllocatesNorFrees) {
#ifdef TAMBREL_SANITIZED
    GTEST_SKIP() << "A sanitizer has an allocator of its own.";
#endif
    const auto allocate = [] { ::operator delete(::operator new(1)); };
    ASSERT_EQ(allocationsDuring(allocate), 2) << "Nothing is counted.";

    const auto synthesizer = makeSynthesizer(48000, {.underLoad = UnderLoad::giveUpVoices});
    synthesizer->loadSoundBank(bankTimGM6mb);
    Sequencer sequencer(48000);
    PlaybackBuffer buffer(sequencer, 48000);
    buffer.volume().set(0.5);
    sequencer.setSynthesizer(*synthesizer);
    std::array<float, 1024> left{};
    std::array<float, 1024> right{};
    const auto render = [&] {
        static_cast<void>(buffer.takeBack(700));
        buffer.renderAudio(left.data(), right.data(), 1024);
    };
    std::mt19937 engine(1);
    for (int order = 0; order < 100; ++order) {
        if (order % 5 == 4)
            sequencer.halt();
        else if (order % 5 == 2)
            static_cast<void>(sequencer.pause(1));
        else if (order % 5 == 3)
            sequencer.resume();
        else // A song of its own, so that the order that is let go of is the last to hold it.
            sequencer.play(busySong(), static_cast<double>(engine() % 2000) / 1000);
        for (int period = 0; period < 20; ++period)
            ASSERT_EQ(allocationsDuring(render), 0) << "order " << order << ", period " << period;
    }
    sequencer.play(busySong(), 0);
    while (!buffer.isSilent())
        ASSERT_EQ(allocationsDuring(render), 0);
}

} // namespace
} // namespace tambrel
