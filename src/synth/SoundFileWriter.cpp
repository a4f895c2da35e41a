#include "SoundFileWriter.h"

#include "OggPages.h"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace tambrel {
namespace {

SF_INFO infoOf(const SoundFormat& format, int container) {
    constexpr std::array<int, 3> sampleForms{SF_FORMAT_PCM_16, SF_FORMAT_PCM_24, SF_FORMAT_FLOAT};
    SF_INFO info{};
    info.samplerate = format.rate;
    info.channels = SoundFileWriter::channels;
    info.format = container;
    if ((container & SF_FORMAT_SUBMASK) == 0)
        info.format |= sampleForms.at(static_cast<std::size_t>(format.samples));
    if (container == SF_FORMAT_RAW)
        info.format |= SF_ENDIAN_LITTLE;
    return info;
}

int containerOf(const SoundFormat& format) {
    constexpr std::array<int, 5> containers{SF_FORMAT_WAV, SF_FORMAT_FLAC, SF_FORMAT_OGG | SF_FORMAT_VORBIS,
                                            SF_FORMAT_OGG | SF_FORMAT_OPUS, SF_FORMAT_RAW};
    return containers.at(static_cast<std::size_t>(format.container));
}

// std::nearbyint is a call for each sample. Beyond 2^52 a double has no digits after the point.
double nearestWhole(double value) {
    constexpr double many = 6755399441055744.0; // 1.5 times 2^52, so that it serves both signs.
    return value + many - many;
}

bool isOgg(const SoundFormat& format) {
    return format.container == SoundContainer::vorbis || format.container == SoundContainer::opus;
}

} // namespace

bool SoundFormat::isAvailable() const {
    const SF_INFO info = infoOf(*this, containerOf(*this));
    constexpr std::array opusRates{8000, 12000, 16000, 24000, 48000};
    return sf_format_check(&info) != 0 &&
           (container != SoundContainer::opus || std::ranges::find(opusRates, rate) != opusRates.end());
}

std::optional<int> SoundFormat::bytesPerFrame() const {
    constexpr std::array bytesPerSample{2, 3, 4};
    if (container != SoundContainer::wav && container != SoundContainer::raw)
        return std::nullopt;
    return SoundFileWriter::channels * bytesPerSample.at(static_cast<std::size_t>(samples));
}

/// What libsndfile writes to. Keeps the operating system's reason, which that would put in words of its own.
class SoundFileWriter::Descriptor {
public:
    Descriptor(int descriptor, bool isOgg)
        : descriptor_(descriptor), isOgg_(isOgg), canSeek_(lseek(descriptor, 0, SEEK_CUR) >= 0) {}

    [[nodiscard]] bool canSeek() const { return canSeek_; }
    [[nodiscard]] int error() const { return error_; }

    // How many bytes were taken: fewer when they cannot be written.
    sf_count_t write(const void* bytes, sf_count_t count) {
        std::span rest(static_cast<const std::uint8_t*>(bytes), static_cast<std::size_t>(count));
        if (isOgg_)
            rest = pages_.take(rest);
        while (!rest.empty() && error_ == 0) {
            const ssize_t written = ::write(descriptor_, rest.data(), rest.size());
            if (written < 0 && errno != EINTR)
                error_ = errno;
            rest = rest.subspan(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
        }
        if (error_ != 0)
            return 0;
        taken_ += count;
        return count;
    }

    static SF_VIRTUAL_IO interface() {
        return {[](void* self) { return of(self).length(); },
                [](sf_count_t offset, int whence, void* self) { return of(self).seek(offset, whence); },
                [](void* bytes, sf_count_t count, void* self) { return of(self).read(bytes, count); },
                [](const void* bytes, sf_count_t count, void* self) { return of(self).write(bytes, count); },
                [](void* self) { return of(self).seek(0, SEEK_CUR); }};
    }

private:
    static Descriptor& of(void* self) { return *static_cast<Descriptor*>(self); }

    sf_count_t seek(sf_count_t offset, int whence) {
        return canSeek_ && !isOgg_ ? lseek(descriptor_, offset, whence) : taken_;
    }
    sf_count_t read(void* bytes, sf_count_t count) const {
        return ::read(descriptor_, bytes, static_cast<std::size_t>(count));
    }
    sf_count_t length() {
        const sf_count_t position = seek(0, SEEK_CUR);
        const sf_count_t end = seek(0, SEEK_END);
        seek(position, SEEK_SET);
        return end;
    }

    int descriptor_;
    bool isOgg_;
    bool canSeek_;
    int error_ = 0;
    sf_count_t taken_ = 0;
    OggPages pages_;
};

SoundFileWriter::SoundFileWriter(int descriptor, const SoundFormat& format, std::int64_t expectedFrames)
    : format_(format), file_(std::make_unique<Descriptor>(descriptor, isOgg(format))) {
    constexpr std::int64_t largestWAV = 0xFFFF'0000; // Its lengths have 32 bits; some are for the header.
    int container = containerOf(format);
    if (format.container == SoundContainer::wav) {
        if (!file_->canSeek()) {
            writeStreamHeader();
            container = SF_FORMAT_RAW;
        } else if (expectedFrames > largestWAV / *format.bytesPerFrame()) {
            container = SF_FORMAT_RF64;
        }
    }
    SF_INFO info = infoOf(format, container);
    SF_VIRTUAL_IO interface = Descriptor::interface();
    sound_ = sf_open_virtual(&interface, SFM_WRITE, &info, file_.get());
    if (sound_ == nullptr)
        fail();
    sf_command(sound_, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    sf_command(sound_, SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE); // It would hold the time of day.
}

SoundFileWriter::~SoundFileWriter() {
    if (sound_ != nullptr)
        sf_close(sound_);
}

void SoundFileWriter::fail() const {
    if (const int error = file_->error(); error != 0)
        throw RenderError(std::generic_category().message(error));
    throw RenderError(sound_ != nullptr ? sf_strerror(sound_) : sf_strerror(nullptr));
}

// RIFF WAVE: the lengths of the whole and of the samples are the largest there are.
void SoundFileWriter::writeStreamHeader() {
    const auto bytesPerFrame = static_cast<std::uint16_t>(*format_.bytesPerFrame());
    const auto rate = static_cast<std::uint32_t>(format_.rate);
    const std::uint16_t kind = format_.samples == SampleForm::float32 ? 3 : 1;
    const auto bits = static_cast<std::uint16_t>(bytesPerFrame * 8 / channels);
    std::vector<std::uint8_t> header;
    const auto text = [&](const char* four) { header.insert(header.end(), four, four + 4); };
    const auto number = [&](std::uint32_t value, int bytes) {
        for (; bytes > 0; --bytes, value >>= 8)
            header.push_back(static_cast<std::uint8_t>(value));
    };
    text("RIFF"), number(0xFFFF'FFFF, 4), text("WAVE"), text("fmt "), number(16, 4);
    number(kind, 2), number(channels, 2), number(rate, 4), number(rate * bytesPerFrame, 4);
    number(bytesPerFrame, 2), number(bits, 2), text("data"), number(0xFFFF'FFFF, 4);
    if (file_->write(header.data(), static_cast<sf_count_t>(header.size())) <
        static_cast<sf_count_t>(header.size()))
        fail();
}

void SoundFileWriter::write(std::span<const float> samples) {
    if (!isOgg(format_) && format_.samples != SampleForm::float32)
        writeFixedPoint(samples);
    else if (sf_write_float(sound_, samples.data(), static_cast<sf_count_t>(samples.size())) !=
             static_cast<sf_count_t>(samples.size()))
        fail();
}

void SoundFileWriter::writeFixedPoint(std::span<const float> samples) {
    const bool is16Bit = format_.samples == SampleForm::int16;
    const int unusedBits = is16Bit ? 16 : 8;
    const double fullScale = is16Bit ? 0x8000 : 0x80'0000;
    fixedPoint_.resize(samples.size());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double exact = samples[i] * fullScale + (is16Bit ? dither() : 0);
        const double step = std::clamp(nearestWhole(exact), -fullScale, fullScale - 1);
        fixedPoint_[i] = static_cast<std::int32_t>(step) * (1 << unusedBits);
    }
    if (sf_write_int(sound_, fixedPoint_.data(), static_cast<sf_count_t>(samples.size())) !=
        static_cast<sf_count_t>(samples.size()))
        fail();
}

// Triangular between -1 and 1 step: the error of rounding becomes an even noise, whatever the sound.
double SoundFileWriter::dither() {
    const auto next = [this] {
        random_ = random_ * 1'664'525 + 1'013'904'223;
        return static_cast<std::int32_t>(random_);
    };
    constexpr double range = 4294967296.0;
    const double first = next() / range;
    return first + next() / range;
}

void SoundFileWriter::finish() {
    const int error = sf_close(std::exchange(sound_, nullptr));
    if (file_->error() != 0 || error != 0)
        throw RenderError(file_->error() != 0 ? std::generic_category().message(file_->error())
                                              : sf_error_number(error));
}

} // namespace tambrel
