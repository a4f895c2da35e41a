#include "VariantPreparation.h"

#include "SongLoader.h"
#include "TambrelPlaybackState.h"

#include <utility>

namespace tambrel {

bool VariantPreparation::isReady() const {
    return !state_.missingVariant();
}

void VariantPreparation::begin() {
    auto request = state_.missingVariant();
    if (request && task_.stop_possible() && request->isLoud == isLoud_)
        return;
    cancel();
    if (!request)
        return;
    state_.freeMIDI2ClipCompanion();
    task_ = std::stop_source();
    isLoud_ = request->isLoud;
    // A task that was stopped may have come to its end all the same.
    loader_.prepare(*std::move(request), task_.get_token(),
                    [this, stop = task_.get_token()](std::optional<PreparedVariant> variant) {
                        if (stop.stop_requested())
                            return;
                        task_ = std::stop_source(std::nostopstate);
                        if (variant)
                            state_.takePrepared(*std::move(variant));
                        if (onDone)
                            onDone();
                    });
}

void VariantPreparation::cancel() {
    std::exchange(task_, std::stop_source(std::nostopstate)).request_stop();
}

} // namespace tambrel
