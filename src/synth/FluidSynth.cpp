#include "AudioDriver.h"
#include "Synthesizer.h"

#include <alsa/asoundlib.h>
#include <fluidsynth.h>

#include <array>
#include <atomic>
#include <dlfcn.h>
#include <string>

// The library renders each block's effects in a parallel region of one thread, for which OpenMP's run time
// allocates and frees memory. This definition, which the library finds before the run time's, does without.
// Regions of several threads, which there are while a bank is loaded, go on to the run time.
extern "C" void GOMP_parallel(void (*region)(void*), void* data, unsigned threads, unsigned flags) {
    if (threads == 1) {
        region(data);
        return;
    }
    static const auto runTime = reinterpret_cast<decltype(&GOMP_parallel)>(dlsym(RTLD_NEXT, "GOMP_parallel"));
    runTime(region, data, threads, flags);
}

namespace tambrel {
namespace {

// clang-format off
// What is used of the library, and of ALSA, which the library brings with it.
#define EACH_FUNCTION(FUNCTION) \
    FUNCTION(delete_fluid_audio_driver) FUNCTION(delete_fluid_settings) FUNCTION(delete_fluid_synth) \
    FUNCTION(fluid_audio_driver_register) FUNCTION(fluid_preset_get_banknum) \
    FUNCTION(fluid_preset_get_num) FUNCTION(fluid_set_log_function) FUNCTION(fluid_settings_setint) \
    FUNCTION(fluid_settings_setnum) FUNCTION(fluid_settings_setstr) FUNCTION(fluid_synth_all_notes_off) \
    FUNCTION(fluid_synth_all_sounds_off) FUNCTION(fluid_synth_bank_select) FUNCTION(fluid_synth_cc) \
    FUNCTION(fluid_synth_channel_pressure) FUNCTION(fluid_synth_get_active_voice_count) \
    FUNCTION(fluid_synth_get_basic_channel) FUNCTION(fluid_synth_get_cc) \
    FUNCTION(fluid_synth_get_channel_preset) FUNCTION(fluid_synth_get_gen) \
    FUNCTION(fluid_synth_get_pitch_bend) FUNCTION(fluid_synth_get_pitch_wheel_sens) \
    FUNCTION(fluid_synth_get_program) FUNCTION(fluid_synth_key_pressure) FUNCTION(fluid_synth_noteoff) \
    FUNCTION(fluid_synth_noteon) FUNCTION(fluid_synth_pitch_bend) FUNCTION(fluid_synth_program_change) \
    FUNCTION(fluid_synth_reset_basic_channel) FUNCTION(fluid_synth_set_basic_channel) \
    FUNCTION(fluid_synth_set_channel_type) FUNCTION(fluid_synth_set_gain) FUNCTION(fluid_synth_sfload) \
    FUNCTION(fluid_synth_sysex) FUNCTION(fluid_synth_system_reset) FUNCTION(fluid_synth_write_float) \
    FUNCTION(fluid_version_str) \
    FUNCTION(new_fluid_audio_driver2) FUNCTION(new_fluid_settings) FUNCTION(new_fluid_synth) \
    FUNCTION(snd_lib_error_set_handler)
// clang-format on

// The library is loaded when the first synthesizer or driver is made, off the main thread: what it brings
// with it takes longer to load than the rest of the program. A member is a function of the library, by its
// own name.
class Library {
    void* handle_ = dlopen("libfluidsynth.so.3", RTLD_NOW | RTLD_GLOBAL);

public:
    [[nodiscard]] bool isLoaded() const { return handle_ != nullptr; }

#define FIND(name) decltype(&::name) name = reinterpret_cast<decltype(&::name)>(dlsym(handle_, #name));
    EACH_FUNCTION(FIND)
#undef FIND
};

const Library& library() {
    static const Library loaded; // Never unloaded.
    return loaded;
}

// Measured so that the loudest of the songs in openttd-openmsx and planetblupi-music-midi stays below full
// scale with the bank TimGM6mb, and the softest is well heard.
constexpr double synthesizerGain = 0.22;
constexpr int channelCount = 16;
constexpr int deviceNumber = 16; // What GS files address; universal messages reach every device.
constexpr int framesPerPeriod = 1024;
constexpr int periods = 2;

// The library reports to one global function. While a thread opens something, its messages are gathered for
// the error text; an error from any other thread is a driver that has given up.
thread_local std::string* gatheredMessages = nullptr;
std::atomic<std::uint64_t> strayErrors{0};

void gatherMessage(int level, const char* message, void*) {
    if (gatheredMessages == nullptr) {
        if (level <= FLUID_ERR)
            strayErrors.fetch_add(1, std::memory_order_relaxed);
    } else if (level <= FLUID_ERR) {
        if (!gatheredMessages->empty())
            *gatheredMessages += "; ";
        *gatheredMessages += message;
    }
}

void ignoreALSAMessage(const char*, int, const char*, int, const char*, ...) {}

class MessageGatherer {
public:
    MessageGatherer() { gatheredMessages = &text_; }
    ~MessageGatherer() { gatheredMessages = nullptr; }
    MessageGatherer(const MessageGatherer&) = delete;
    MessageGatherer& operator=(const MessageGatherer&) = delete;
    [[nodiscard]] const std::string& text() const { return text_; }

private:
    std::string text_;
};

struct SettingsDeleter {
    void operator()(fluid_settings_t* settings) const { library().delete_fluid_settings(settings); }
};
struct SynthDeleter {
    void operator()(fluid_synth_t* synth) const { library().delete_fluid_synth(synth); }
};
struct DriverDeleter {
    void operator()(fluid_audio_driver_t* driver) const { library().delete_fluid_audio_driver(driver); }
};
using Settings = std::unique_ptr<fluid_settings_t, SettingsDeleter>;

Settings makeSettings(double sampleRate) {
    static const bool libraryIsReady = [] {
        for (const int level : {FLUID_PANIC, FLUID_ERR, FLUID_WARN, FLUID_INFO, FLUID_DBG})
            library().fluid_set_log_function(level, gatherMessage, nullptr);
        static const char* drivers[] = {"pulseaudio", "alsa", "jack", nullptr};
        library().fluid_audio_driver_register(drivers);
        if (library().snd_lib_error_set_handler != nullptr)
            library().snd_lib_error_set_handler(ignoreALSAMessage); // It would write to standard error.
        return true;
    }();
    static_cast<void>(libraryIsReady);
    Settings settings(library().new_fluid_settings());
    library().fluid_settings_setnum(settings.get(), "synth.sample-rate", sampleRate);
    return settings;
}

} // namespace

struct Synthesizer::Handles {
    Settings settings;
    std::unique_ptr<fluid_synth_t, SynthDeleter> synth;
};

std::string synthesizerVersion() {
    return std::string("FluidSynth ") + (library().isLoaded() ? library().fluid_version_str() : "(missing)");
}

Synthesizer::Synthesizer(double sampleRate) : handles_(std::make_unique<Handles>()) {
    if (!library().isLoaded())
        throw SoundBankError("The synthesizer library libfluidsynth.so.3 could not be loaded.");
    handles_->settings = makeSettings(sampleRate);
    fluid_settings_t* settings = handles_->settings.get();
    library().fluid_settings_setnum(settings, "synth.gain", synthesizerGain);
    library().fluid_settings_setint(settings, "synth.device-id", deviceNumber);
    library().fluid_settings_setint(settings, "synth.threadsafe-api", 0); // No lock in the audio callback.
    library().fluid_settings_setint(settings, "synth.lock-memory", 0);
    handles_->synth.reset(library().new_fluid_synth(settings));
    reset();
}

Synthesizer::~Synthesizer() = default;

void Synthesizer::loadSoundBank(const std::filesystem::path& bank) {
    MessageGatherer messages;
    constexpr int resetPresets = 1;
    if (library().fluid_synth_sfload(handles_->synth.get(), bank.c_str(), resetPresets) == FLUID_FAILED)
        throw SoundBankError("The sound bank " + bank.string() + " could not be loaded: " +
                             (messages.text().empty() ? "it is no SoundFont file" : messages.text()) + ".");
}

void Synthesizer::send(MIDIMessage message) noexcept {
    fluid_synth_t* synth = handles_->synth.get();
    const int channel = MIDIStatus::channel(message.status);
    switch (MIDIStatus::kind(message.status)) {
    case MIDIStatus::noteOff:
        library().fluid_synth_noteoff(synth, channel, message.data1);
        break;
    case MIDIStatus::noteOn:
        library().fluid_synth_noteon(synth, channel, message.data1, message.data2);
        break;
    case MIDIStatus::polyphonicPressure:
        library().fluid_synth_key_pressure(synth, channel, message.data1, message.data2);
        break;
    case MIDIStatus::controlChange:
        sendController(channel, message.data1, message.data2);
        break;
    case MIDIStatus::programChange:
        library().fluid_synth_program_change(synth, channel, message.data1);
        break;
    case MIDIStatus::channelPressure:
        library().fluid_synth_channel_pressure(synth, channel, message.data1);
        break;
    case MIDIStatus::pitchBend:
        library().fluid_synth_pitch_bend(synth, channel, message.data1 | message.data2 << 7);
        break;
    default:
        sendSystem(message);
        break;
    }
}

void Synthesizer::sendController(int channel, std::uint8_t number, std::uint8_t value) noexcept {
    // Choosing a tuning program would allocate one, for no effect: there are none but the equal temperament.
    constexpr std::uint8_t tuningProgram = 3;
    constexpr std::uint8_t nullParameter = 127;
    if (number == Controller::registeredLSB && value == tuningProgram)
        value = nullParameter;
    if (number >= Controller::omniOff)
        value = 0; // Each channel is a group of its own, which a larger number of voices would overlap.
    library().fluid_synth_cc(handles_->synth.get(), channel, number, value);
}

void Synthesizer::sendSystem(MIDIMessage message) noexcept {
    fluid_synth_t* synth = handles_->synth.get();
    switch (message.systemKind()) {
    case SystemMessage::gmReset:
    case SystemMessage::gsReset:
    case SystemMessage::xgReset:
        resetTo(message.systemKind());
        break;
    case SystemMessage::masterVolume: {
        constexpr float fullVolume = 16383;
        const float volume = static_cast<float>(message.data2 | message.data3 << 7) / fullVolume;
        library().fluid_synth_set_gain(synth,
                                       static_cast<float>(synthesizerGain) * volume *
                                           volume); // RP-024: 40 log10
        break;
    }
    case SystemMessage::rhythmPart: {
        const bool isMelodic = message.data3 == 0;
        constexpr int drumBank = 128;
        library().fluid_synth_set_channel_type(synth, message.data2,
                                               isMelodic ? CHANNEL_TYPE_MELODIC : CHANNEL_TYPE_DRUM);
        library().fluid_synth_bank_select(synth, message.data2, isMelodic ? 0 : drumBank);
        library().fluid_synth_program_change(synth, message.data2, 0);
        break;
    }
    case SystemMessage::none:
        break;
    }
}

void Synthesizer::reset() noexcept {
    // Banks are read the GS way unless a song asks for another; the library's own system reset would leave
    // that as the last song had it.
    resetTo(SystemMessage::gsReset);
}

void Synthesizer::resetTo(SystemMessage standard) noexcept {
    static constexpr unsigned char gmOn[] = {0x7E, 0x7F, 0x09, 0x01};
    static constexpr unsigned char gsReset[] = {0x41, deviceNumber, 0x42, 0x12, 0x40, 0x00, 0x7F, 0x00, 0x41};
    static constexpr unsigned char xgOn[] = {0x43, deviceNumber, 0x4C, 0x00, 0x00, 0x7E, 0x00};
    fluid_synth_t* synth = handles_->synth.get();
    const auto pass = [synth](const auto& bytes) {
        library().fluid_synth_sysex(synth, reinterpret_cast<const char*>(bytes), sizeof(bytes), nullptr,
                                    nullptr, nullptr, 0);
    };
    silence();
    if (standard == SystemMessage::gmReset)
        pass(gmOn);
    else if (standard == SystemMessage::xgReset)
        pass(xgOn);
    else
        pass(gsReset);
    // By default all channels are one group, and an Omni Off on the first switches off the others.
    constexpr int allGroups = -1;
    library().fluid_synth_reset_basic_channel(synth, allGroups);
    for (int channel = 0; channel < channelCount; ++channel)
        library().fluid_synth_set_basic_channel(synth, channel, FLUID_CHANNEL_MODE_OMNIOFF_POLY, 1);
    library().fluid_synth_set_gain(synth, static_cast<float>(synthesizerGain));
}

// The library revives a note that is told to end at once and then, before the next block, to be released,
// which a reset and a pedal let go do; and its reset leaves something in the filters of the reverb, which
// only the next reset takes away. So the blocks in which all that ends are rendered here.
void Synthesizer::silence() noexcept {
    constexpr int allChannels = -1;
    std::array<float, synthesizerBlock> left;
    std::array<float, synthesizerBlock> right;
    library().fluid_synth_all_sounds_off(handles_->synth.get(), allChannels);
    render(left.data(), right.data(), synthesizerBlock);
    library().fluid_synth_system_reset(handles_->synth.get());
    render(left.data(), right.data(), synthesizerBlock);
}

void Synthesizer::releaseNotes() noexcept {
    fluid_synth_t* synth = handles_->synth.get();
    for (int channel = 0; channel < channelCount; ++channel) {
        library().fluid_synth_cc(synth, channel, Controller::sustain, 0);
        library().fluid_synth_cc(synth, channel, Controller::sostenuto, 0);
    }
    constexpr int allChannels = -1;
    library().fluid_synth_all_notes_off(synth, allChannels);
}

void Synthesizer::render(float* left, float* right, int frames) noexcept {
    library().fluid_synth_write_float(handles_->synth.get(), frames, left, 0, 1, right, 0, 1);
}

int Synthesizer::activeVoices() const noexcept {
    return library().fluid_synth_get_active_voice_count(handles_->synth.get());
}

ChannelReading Synthesizer::channel(int number) const {
    fluid_synth_t* synth = handles_->synth.get();
    ChannelReading reading;
    for (std::size_t controller = 0; controller < reading.controllers.size(); ++controller)
        library().fluid_synth_get_cc(synth, number, static_cast<int>(controller),
                                     &reading.controllers[controller]);
    for (int generator = 0; generator < GEN_LAST; ++generator)
        reading.generators.push_back(library().fluid_synth_get_gen(synth, number, generator));
    int bankNumber = 0;
    library().fluid_synth_get_program(synth, number, &bankNumber, &reading.bank, &reading.program);
    if (fluid_preset_t* preset = library().fluid_synth_get_channel_preset(synth, number)) {
        reading.presetBank = library().fluid_preset_get_banknum(preset);
        reading.presetProgram = library().fluid_preset_get_num(preset);
    }
    library().fluid_synth_get_pitch_bend(synth, number, &reading.pitchBend);
    library().fluid_synth_get_pitch_wheel_sens(synth, number, &reading.bendRange);
    library().fluid_synth_get_basic_channel(synth, number, nullptr, &reading.mode, nullptr);
    return reading;
}

namespace {

class FluidAudioDriver final : public AudioDriver {
public:
    FluidAudioDriver(const std::string& name, double sampleRate, AudioSource& source)
        : name_(name), settings_(makeSettings(sampleRate)), source_(source) {
        MessageGatherer messages;
        library().fluid_settings_setstr(settings_.get(), "audio.driver", name.c_str());
        library().fluid_settings_setint(settings_.get(), "audio.period-size", framesPerPeriod);
        library().fluid_settings_setint(settings_.get(), "audio.periods", periods);
        library().fluid_settings_setstr(settings_.get(), "audio.jack.id", "Tambrel");
        driver_.reset(library().new_fluid_audio_driver2(settings_.get(), callback, this));
        if (!driver_)
            throw AudioDriverError(name + ": " +
                                   (messages.text().empty() ? "not available" : messages.text()));
    }

    [[nodiscard]] std::string name() const override { return name_; }

private:
    static int callback(void* self, int frames, int, float**, int, float* out[]) {
        static_cast<FluidAudioDriver*>(self)->source_.renderAudio(out[0], out[1], frames);
        return FLUID_OK;
    }

    std::string name_;
    Settings settings_;
    AudioSource& source_;
    std::unique_ptr<fluid_audio_driver_t, DriverDeleter> driver_; // Last: its thread uses all of the above.
};

} // namespace

std::uint64_t audioDriverFailures() noexcept {
    return strayErrors.load(std::memory_order_relaxed);
}

std::vector<std::string> defaultAudioDrivers() {
    return {"pulseaudio", "alsa", "jack"};
}

namespace {

std::string withoutFullStop(std::string text) {
    while (text.ends_with('.'))
        text.pop_back();
    return text;
}

} // namespace

std::unique_ptr<AudioDriver> openAudioDriver(const std::vector<std::string>& names, double sampleRate,
                                             AudioSource& source) {
    std::string answers;
    for (const std::string& name : names) {
        if (name == silentDriverName)
            return openSilentDriver(sampleRate, source);
        try {
            return std::make_unique<FluidAudioDriver>(name, sampleRate, source);
        } catch (const AudioDriverError& error) {
            answers += (answers.empty() ? "" : "; ") + withoutFullStop(error.what());
        }
    }
    throw AudioDriverError("No sound output could be opened. Tried " + answers + ".");
}

} // namespace tambrel
