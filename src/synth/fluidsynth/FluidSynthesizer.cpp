#include "FluidSynthesizer.h"

#include "SoundModulators.h"

#include <algorithm>
#include <array>
#include <dlfcn.h>
#include <fstream>
#include <mutex>
#include <thread>

namespace tambrel {
namespace {

// Measured so that the loudest of the songs in openttd-openmsx and planetblupi-music-midi stays below full
// scale with the bank TimGM6mb, and the softest is well heard.
constexpr double synthesizerGain = 0.22;
constexpr int channelCount = 16;
constexpr int deviceNumber = 16; // What GS files address; universal messages reach every device.
// FluidSynth reads DLS banks by way of GLib, which would write its own complaint of a broken one to standard
// error. True once it keeps quiet; there is no GLib where FluidSynth was built without.
bool silenceGLib() {
    using Handler = void (*)(const char*, int, const char*, void*);
    static const bool isSilent = [] {
        const auto setHandler =
            reinterpret_cast<Handler (*)(Handler, void*)>(dlsym(RTLD_DEFAULT, "g_log_set_default_handler"));
        if (setHandler != nullptr)
            setHandler([](const char*, int, const char*, void*) {}, nullptr);
        return setHandler != nullptr;
    }();
    return isSilent;
}

// FluidSynth has OpenMP decode compressed samples (SoundFont 3) by several threads. Where there is nothing to
// decode, they cost more than they gain.
bool isCompressed(const std::filesystem::path& bank) {
    constexpr std::size_t versionAt = 32; // RIFF, sfbk, LIST, INFO, ifil, each with its size.
    std::array<char, versionAt + 1> begin{};
    std::ifstream(bank, std::ios::binary).read(begin.data(), begin.size());
    return begin[versionAt] == 3;
}

void decodeBy(int threads) {
    using SetThreads = void (*)(int);
    static const auto set = reinterpret_cast<SetThreads>(dlsym(RTLD_DEFAULT, "omp_set_num_threads"));
    if (set != nullptr)
        set(threads);
}

constexpr int drumBank = 128;

// Some library leaves the upper halves of the AVX registers in use. Then each SSE instruction of FluidSynth
// waits for them: rendering takes a sixth more.
#ifdef __x86_64__
const bool hasAVX = __builtin_cpu_supports("avx") != 0;
[[gnu::target("avx")]] void clearUpperHalves() noexcept {
    __builtin_ia32_vzeroupper();
}
void leaveAVX() noexcept {
    if (hasAVX)
        clearUpperHalves();
}
#else
void leaveAVX() noexcept {}
#endif

} // namespace

FluidSynthesizer::FluidSynthesizer(double sampleRate, const SynthesizerOptions& options)
    : settings_(makeFluidSettings(sampleRate)), options_(options) {
    fluid_settings_t* const settings = settings_.get();
    fluid_settings_setnum(settings, "synth.gain", synthesizerGain);
    fluid_settings_setint(settings, "synth.device-id", deviceNumber);
    fluid_settings_setint(settings, "synth.threadsafe-api", 0); // No lock in the audio callback.
    // The samples stay in memory while they are played, as far as the user's limit allows.
    fluid_settings_setint(settings, "synth.lock-memory",
                          options.underLoad == UnderLoad::giveUpVoices ? 1 : 0);
    fluid_settings_setint(settings, "synth.polyphony", maximumVoices);
    for (const char* effect : {"synth.reverb.active", "synth.chorus.active"})
        fluid_settings_setint(settings, effect, options.effects == Effects::on ? 1 : 0);
    // The first one fills in tables that all share; another thread would not wait for them.
    static std::mutex making;
    const std::lock_guard lock(making);
    synth_.reset(new_fluid_synth(settings));
    addSoundModulators(*synth_);
    song_.emplace(*synth_);
    parameters_.emplace(*synth_);
    reset();
}

void FluidSynthesizer::loadSoundBank(const std::filesystem::path& bank) {
    FluidMessageGatherer messages;
    static_cast<void>(silenceGLib());
    decodeBy(isCompressed(bank) ? static_cast<int>(std::max(std::thread::hardware_concurrency(), 1U)) : 1);
    constexpr int resetPresets = 1;
    if (fluid_synth_sfload(synth_.get(), bank.c_str(), resetPresets) == FLUID_FAILED)
        throw SoundBankError("The sound bank " + bank.string() + " could not be loaded: " +
                             (messages.text().empty() ? "it is no SoundFont file" : messages.text()) + ".");
}

void FluidSynthesizer::send(MIDIMessage message) noexcept {
    fluid_synth_t* synth = synth_.get();
    const int channel = MIDIStatus::channel(message.status);
    switch (MIDIStatus::kind(message.status)) {
    case MIDIStatus::noteOff:
        fluid_synth_noteoff(synth, channel, message.data1);
        break;
    case MIDIStatus::noteOn:
        makeRoom();
        fluid_synth_noteon(synth, channel, message.data1, message.data2);
        shapeNote(channel, message.data1);
        break;
    case MIDIStatus::polyphonicPressure:
        fluid_synth_key_pressure(synth, channel, message.data1, message.data2);
        break;
    case MIDIStatus::controlChange:
        sendController(channel, message.data1, message.data2);
        break;
    case MIDIStatus::programChange:
        fluid_synth_program_change(synth, channel, message.data1);
        break;
    case MIDIStatus::channelPressure:
        fluid_synth_channel_pressure(synth, channel, message.data1);
        break;
    case MIDIStatus::pitchBend:
        fluid_synth_pitch_bend(synth, channel, message.data1 | message.data2 << 7);
        break;
    default:
        sendSystem(message);
        break;
    }
}

void FluidSynthesizer::sendController(int channel, std::uint8_t number, std::uint8_t value) noexcept {
    if (ParameterEntry::takes(number)) {
        parameters_->apply(channel, number, value);
        return;
    }
    if (PrivateController::contains(number))
        return;
    if (number == Controller::bankSelectMSB)
        song_->selectBank(channel, value);
    // A vibrato cannot be less than none, and FluidSynth would turn it upside down.
    if (number == Controller::vibratoDepth)
        value = std::max(value, std::uint8_t{64});
    if (number == Controller::resetAllControllers) {
        // FluidSynth forgets the pedals with the notes that they hold, which then never end.
        fluid_synth_cc(synth_.get(), channel, Controller::sostenuto, 0);
        fluid_synth_cc(synth_.get(), channel, Controller::sustain, 0);
    }
    if (number >= Controller::omniOff)
        value = 0; // Each channel is a group of its own, which a larger number of voices would overlap.
    fluid_synth_cc(synth_.get(), channel, number, value);
    if (number == Controller::resetAllControllers) {
        parameters_->reset(channel);
        song_->restoreControllers(channel);
    }
}

void FluidSynthesizer::releaseNotes(int channel) noexcept {
    constexpr std::array pedals{Controller::sostenuto, Controller::sustain};
    std::array<int, pedals.size()> values{};
    for (std::size_t pedal = 0; pedal < pedals.size(); ++pedal) {
        fluid_synth_get_cc(synth_.get(), channel, pedals[pedal], &values[pedal]);
        fluid_synth_cc(synth_.get(), channel, pedals[pedal], 0);
    }
    fluid_synth_all_notes_off(synth_.get(), channel);
    for (std::size_t pedal = 0; pedal < pedals.size(); ++pedal)
        fluid_synth_cc(synth_.get(), channel, pedals[pedal], values[pedal]);
}

void FluidSynthesizer::sendSystem(MIDIMessage message) noexcept {
    fluid_synth_t* synth = synth_.get();
    switch (message.systemKind()) {
    case SystemMessage::gmReset:
    case SystemMessage::gsReset:
    case SystemMessage::xgReset:
        resetTo(message.systemKind());
        break;
    case SystemMessage::masterVolume: {
        constexpr float fullVolume = 16383;
        const float volume = static_cast<float>(message.data2 | message.data3 << 7) / fullVolume;
        fluid_synth_set_gain(synth,
                             static_cast<float>(synthesizerGain) * volume * volume); // RP-024: 40 log10
        break;
    }
    case SystemMessage::rhythmPart: {
        releaseNotes(message.data2);
        const bool isMelodic = message.data3 == 0;
        song_->setDrums(message.data2, message.data3);
        fluid_synth_bank_select(synth, message.data2, isMelodic ? 0 : drumBank);
        fluid_synth_program_change(synth, message.data2, 0);
        break;
    }
    case SystemMessage::none:
        break;
    default:
        song_->apply(message);
        break;
    }
}

void FluidSynthesizer::reset() noexcept {
    // Banks are read the GS way unless a song asks for another; FluidSynth's own system reset would leave
    // that as the last song had it.
    resetTo(SystemMessage::gsReset);
}

void FluidSynthesizer::resetTo(SystemMessage standard) noexcept {
    static constexpr unsigned char gmOn[] = {0x7E, 0x7F, 0x09, 0x01};
    static constexpr unsigned char gsReset[] = {0x41, deviceNumber, 0x42, 0x12, 0x40, 0x00, 0x7F, 0x00, 0x41};
    static constexpr unsigned char xgOn[] = {0x43, deviceNumber, 0x4C, 0x00, 0x00, 0x7E, 0x00};
    fluid_synth_t* synth = synth_.get();
    const auto pass = [synth](const auto& bytes) {
        fluid_synth_sysex(synth, reinterpret_cast<const char*>(bytes), sizeof(bytes), nullptr, nullptr,
                          nullptr, 0);
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
    fluid_synth_reset_basic_channel(synth, allGroups);
    for (int channel = 0; channel < channelCount; ++channel)
        fluid_synth_set_basic_channel(synth, channel, FLUID_CHANNEL_MODE_OMNIOFF_POLY, 1);
    fluid_synth_set_gain(synth, static_cast<float>(synthesizerGain));
    parameters_->reset();
    constexpr int allChannels = -1;
    fluid_synth_set_interp_method(synth, allChannels,
                                  options_.interpolation == Interpolation::best ? FLUID_INTERP_7THORDER
                                                                                : FLUID_INTERP_4THORDER);
    song_->reset(standard);
}

// FluidSynth revives a note that is told to end at once and, before the next block, to be released, as by a
// reset and a pedal. Its reset also leaves sound in the filters of the reverb until the next reset. So the
// blocks in which all that ends are rendered here.
void FluidSynthesizer::silence() noexcept {
    constexpr int allChannels = -1;
    std::array<float, synthesizerBlock> left;
    std::array<float, synthesizerBlock> right;
    fluid_synth_all_sounds_off(synth_.get(), allChannels);
    render(left.data(), right.data(), synthesizerBlock);
    fluid_synth_system_reset(synth_.get());
    render(left.data(), right.data(), synthesizerBlock);
}

void FluidSynthesizer::releaseNotes() noexcept {
    fluid_synth_t* synth = synth_.get();
    for (int channel = 0; channel < channelCount; ++channel) {
        fluid_synth_cc(synth, channel, Controller::sustain, 0);
        fluid_synth_cc(synth, channel, Controller::sostenuto, 0);
    }
    constexpr int allChannels = -1;
    fluid_synth_all_notes_off(synth, allChannels);
}

void FluidSynthesizer::render(float* left, float* right, int frames) noexcept {
    leaveAVX();
    fluid_synth_write_float(synth_.get(), frames, left, 0, 1, right, 0, 1);
    song_->process(left, right, frames);
    if (options_.underLoad == UnderLoad::giveUpVoices)
        adaptToLoad();
}

int FluidSynthesizer::activeVoices() const noexcept {
    return fluid_synth_get_active_voice_count(synth_.get());
}

ChannelReading FluidSynthesizer::channel(int number) const {
    fluid_synth_t* synth = synth_.get();
    ChannelReading reading;
    reading.entry = parameters_->entry(number);
    for (std::size_t i = 0; i < reading.controllers.size(); ++i) {
        if (!ParameterEntry::takes(static_cast<std::uint8_t>(i)))
            fluid_synth_get_cc(synth, number, static_cast<int>(i), &reading.controllers[i]);
    }
    for (int generator = 0; generator < GEN_LAST; ++generator)
        reading.generators.push_back(fluid_synth_get_gen(synth, number, generator));
    int bankNumber = 0;
    fluid_synth_get_program(synth, number, &bankNumber, &reading.bank, &reading.program);
    if (fluid_preset_t* preset = fluid_synth_get_channel_preset(synth, number)) {
        reading.presetBank = fluid_preset_get_banknum(preset);
        reading.presetProgram = fluid_preset_get_num(preset);
    }
    fluid_synth_get_pitch_bend(synth, number, &reading.pitchBend);
    fluid_synth_get_pitch_wheel_sens(synth, number, &reading.bendRange);
    fluid_synth_get_basic_channel(synth, number, nullptr, &reading.mode, nullptr);
    return reading;
}

} // namespace tambrel
