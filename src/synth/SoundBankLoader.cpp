#include "SoundBankLoader.h"

#include "FreedInBackground.h"

#include <utility>

namespace tambrel {

void SoundBankLoader::load() {
    if (!isReady() && !isLoading())
        begin();
}

void SoundBankLoader::choose(const std::filesystem::path& bank) {
    wish_ = {.named = {}, .preferred = bank};
    begin();
}

void SoundBankLoader::begin() {
    auto banks = banksToTry(wish_);
    if (isReady() && !wish_.preferred.empty())
        banks.resize(1); // If it fails, the bank in use stays.
    wanted_ = banks.front();
    ++loads_;
    executor_.run(
        [banks = std::move(banks), rate = sampleRate_] {
            Result result;
            try {
                result.loaded = loadSynthesizer(rate, banks, {.underLoad = UnderLoad::giveUpVoices});
            } catch (const SoundBankError& error) {
                result.failure = error.what();
            }
            return result;
        },
        [this](Result result) { take(std::move(result)); });
}

void SoundBankLoader::take(Result result) {
    --loads_;
    if (result.loaded.synthesizer == nullptr) {
        const auto& tell = isReady() ? onNotice : onFailure;
        return tell(result.failure);
    }
    const std::string complaints = result.loaded.complaints;
    auto former = std::exchange(loaded_, std::move(result.loaded)).synthesizer;
    sequencer_.setSynthesizer(*loaded_.synthesizer);
    if (former != nullptr) {
        former_.push_back(std::move(former));
        onChange();
    }
    if (!complaints.empty())
        onNotice(complaints + " " + loaded_.bank.string() + " is used instead.");
}

bool SoundBankLoader::collect() {
    if (!sequencer_.isSettled())
        return former_.empty();
    for (auto& former : std::exchange(former_, {}))
        freeInBackground(std::move(former));
    return true;
}

} // namespace tambrel
