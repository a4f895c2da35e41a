#pragma once

#include "Sequencer.h"
#include "SerialExecutor.h"
#include "SoundBank.h"
#include "SynthesizerFactory.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tambrel {

/// The synthesizer that a sequencer plays on, with its bank, which is loaded in the background and may be
/// changed for another at any time. Main thread only.
class SoundBankLoader {
public:
    /// `sequencer` and `executor` outlive the rendering on what is loaded here; `executor` is gone, or has
    /// run dry, when this object is destroyed.
    SoundBankLoader(Sequencer& sequencer, SerialExecutor& executor, SoundBankWish wish, double sampleRate)
        : sequencer_(sequencer), executor_(executor), wish_(std::move(wish)), sampleRate_(sampleRate) {}
    SoundBankLoader(const SoundBankLoader&) = delete;
    SoundBankLoader& operator=(const SoundBankLoader&) = delete;

    /// No bank can be loaded, and there is none from before.
    std::function<void(const std::string& reason)> onFailure;
    /// Another bank is in use than the one that was wanted.
    std::function<void(const std::string& sentence)> onNotice;
    /// Another bank has taken the place of the one before, from the next order to the sequencer on.
    std::function<void()> onChange;

    /// Begins to load the bank, unless that was done. Throws SoundBankError when there is none.
    void load();
    /// Begins to load another bank, or the default one when it is empty. The one in use stays until that is
    /// there, and if it cannot be loaded. Throws SoundBankError when there is none.
    void choose(const std::filesystem::path& bank);
    [[nodiscard]] const SoundBankWish& wish() const { return wish_; }
    /// Cannot be interrupted.
    [[nodiscard]] bool isLoading() const { return loads_ > 0; }
    [[nodiscard]] bool isReady() const { return loaded_.synthesizer != nullptr; }
    /// In use, or the first of those that are being tried; empty before.
    [[nodiscard]] const std::filesystem::path& bank() const { return isReady() ? loaded_.bank : wanted_; }
    /// Frees banks that the rendering has let go of. False while there are any that it has not.
    bool collect();

private:
    struct Result {
        BankedSynthesizer loaded; ///< Without a synthesizer when none could be loaded.
        std::string failure;
    };

    void begin();
    void take(Result result);

    Sequencer& sequencer_;
    SerialExecutor& executor_;
    SoundBankWish wish_;
    const double sampleRate_;
    std::filesystem::path wanted_;
    int loads_ = 0; // On their way.
    BankedSynthesizer loaded_;
    std::vector<std::shared_ptr<const Synthesizer>> former_; // The rendering may still be on them.
};

} // namespace tambrel
