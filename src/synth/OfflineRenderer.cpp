#include "OfflineRenderer.h"

#include "Sequencer.h"
#include "Timeline.h"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace tambrel {
namespace {

constexpr int channels = 2;
constexpr int framesPerStep = 1024;

/// A sound file under a name of its own beside the one that is wanted, which it takes when all has gone well.
class SoundFile {
public:
    SoundFile(const std::filesystem::path& wanted, double sampleRate)
        : wanted_(wanted), temporary_(wanted.string() + ".XXXXXX") {
        std::error_code ignored;
        if (std::filesystem::exists(wanted, ignored) && !std::filesystem::is_regular_file(wanted, ignored))
            throw RenderError("It exists and is no regular file."); // A device must not be renamed away.
        const int descriptor = mkstemp(temporary_.data());
        if (descriptor < 0)
            throw RenderError(std::error_code(errno, std::generic_category()).message());
        SF_INFO info{};
        info.samplerate = static_cast<int>(std::lround(sampleRate));
        info.channels = channels;
        info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
        file_ = sf_open_fd(descriptor, SFM_WRITE, &info, SF_TRUE);
        if (file_ == nullptr) {
            const std::string reason = sf_strerror(nullptr);
            std::filesystem::remove(temporary_);
            throw RenderError(reason);
        }
        sf_command(file_, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    }

    ~SoundFile() {
        if (file_ != nullptr)
            sf_close(file_);
        std::error_code ignored;
        if (!temporary_.empty())
            std::filesystem::remove(temporary_, ignored);
    }
    SoundFile(const SoundFile&) = delete;
    SoundFile& operator=(const SoundFile&) = delete;

    void write(const float* interleaved, int frames) {
        if (sf_writef_float(file_, interleaved, frames) != frames)
            throw RenderError(sf_strerror(file_));
    }

    void keep() {
        if (const int error = sf_close(std::exchange(file_, nullptr)); error != 0)
            throw RenderError(sf_error_number(error));
        // What a new file of this user's would have, instead of the private mode of a temporary one.
        const mode_t mask = umask(0);
        umask(mask);
        std::error_code error;
        std::filesystem::permissions(temporary_, static_cast<std::filesystem::perms>(0666 & ~mask), error);
        std::filesystem::rename(temporary_, wanted_, error);
        if (error)
            throw RenderError(error.message());
        temporary_.clear();
    }

private:
    std::filesystem::path wanted_;
    std::string temporary_;
    SNDFILE* file_ = nullptr;
};

/// Measures and interleaves what has been rendered.
class Meter {
public:
    const float* take(const float* left, const float* right, int frames) {
        for (int frame = 0; frame < frames; ++frame) {
            const auto at = static_cast<std::size_t>(frame) * channels;
            interleaved_[at] = left[frame];
            interleaved_[at + 1] = right[frame];
            peak_ = std::max({peak_, std::abs(left[frame]), std::abs(right[frame])});
            sumOfSquares_ += double{left[frame]} * left[frame] + double{right[frame]} * right[frame];
        }
        frames_ += frames;
        return interleaved_.data();
    }

    [[nodiscard]] RenderResult result(double sampleRate) const {
        const auto samples = static_cast<double>(frames_ * channels);
        return {.seconds = static_cast<double>(frames_) / sampleRate,
                .peak = peak_,
                .rms = frames_ == 0 ? 0 : std::sqrt(sumOfSquares_ / samples)};
    }

private:
    std::array<float, std::size_t{framesPerStep} * channels> interleaved_{};
    std::int64_t frames_ = 0;
    double sumOfSquares_ = 0;
    float peak_ = 0;
};

RenderResult render(const std::shared_ptr<const Timeline>& timeline, const std::filesystem::path& output,
                    const RenderOptions& options) {
    SoundFile file(output, options.sampleRate);
    Synthesizer synthesizer(options.sampleRate);
    synthesizer.loadSoundBank(options.soundBank);
    Sequencer sequencer(options.sampleRate);
    sequencer.setSynthesizer(synthesizer);
    sequencer.play(timeline, 0);

    Meter meter;
    std::array<float, framesPerStep> left{};
    std::array<float, framesPerStep> right{};
    do {
        sequencer.renderAudio(left.data(), right.data(), framesPerStep);
        file.write(meter.take(left.data(), right.data(), framesPerStep), framesPerStep);
        if (options.onProgress && timeline->duration() > 0)
            options.onProgress(sequencer.position() / timeline->duration());
    } while (!sequencer.isSilent() && !options.stop.stop_requested());

    RenderResult result = meter.result(options.sampleRate);
    result.wasStopped = options.stop.stop_requested();
    if (!result.wasStopped)
        file.keep();
    return result;
}

} // namespace

RenderResult renderToWAV(ByteView song, const std::filesystem::path& output, const RenderOptions& options) {
    try {
        return render(Timeline::build(song, options.stop), output, options);
    } catch (const TimelineCancelled&) {
        return {.wasStopped = true};
    }
}

} // namespace tambrel
