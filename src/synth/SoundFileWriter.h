#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <vector>

struct sf_private_tag;

namespace tambrel {

/// The sound could not be written; `what` says why.
class RenderError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

enum class SoundContainer { wav, flac, vorbis, opus, raw };
enum class SampleForm { int16, int24, float32 };

/// How stereo sound is kept in a file. Vorbis and Opus have a sample form of their own.
struct SoundFormat {
    SoundContainer container = SoundContainer::wav;
    SampleForm samples = SampleForm::int16;
    int rate = 48000; ///< Frames a second.

    /// False when libsndfile cannot write it, such as Opus at 44100 Hz.
    [[nodiscard]] bool isAvailable() const;
    /// Bytes of a frame where nothing is compressed; absent otherwise.
    [[nodiscard]] std::optional<int> bytesPerFrame() const;
};

/// Writes stereo sound to an open descriptor, always the same bytes for the same sound: 16-bit samples are
/// dithered from a fixed seed. WAV above 4 GiB becomes RF64. To a descriptor that cannot seek, WAV gets a
/// header without lengths, which readers take to last as long as data comes. Throws RenderError. One thread
/// at a time.
class SoundFileWriter {
public:
    static constexpr int channels = 2;

    /// `expectedFrames` decides the kind of the header.
    SoundFileWriter(int descriptor, const SoundFormat& format, std::int64_t expectedFrames);
    ~SoundFileWriter();
    SoundFileWriter(const SoundFileWriter&) = delete;
    SoundFileWriter& operator=(const SoundFileWriter&) = delete;

    /// Interleaved samples, full scale being 1; what is louder is cut off.
    void write(std::span<const float> samples);
    /// Completes the file. Nothing can be written any more.
    void finish();

private:
    class Descriptor;

    void writeStreamHeader();
    void writeFixedPoint(std::span<const float> samples);
    [[nodiscard]] double dither();
    [[noreturn]] void fail() const;

    SoundFormat format_;
    std::unique_ptr<Descriptor> file_;
    sf_private_tag* sound_ = nullptr;
    std::vector<std::int32_t> fixedPoint_;
    std::uint32_t random_ = 0x2545'F491;
};

} // namespace tambrel
