#include "HeldNotes.h"

#include <algorithm>

namespace tambrel {

void HeldNotes::playWithPedal(std::uint8_t key, Note note) {
    if (note.velocity > 0) {
        notes_[key] = note;
        keyIsUp_.reset(key);
    } else if (sustain_ || captured_[key]) {
        keyIsUp_.set(key);
    } else {
        notes_[key].velocity = 0;
    }
}

void HeldNotes::setSustain(bool isDown) {
    setPedal(sustain_, isDown);
}

void HeldNotes::setSostenuto(bool isDown) {
    if (isDown && !sostenuto_) {
        for (std::size_t key = 0; key < keyCount; ++key)
            captured_.set(key, notes_[key].velocity > 0 && !keyIsUp_[key]);
    } else if (!isDown) {
        captured_.reset();
    }
    setPedal(sostenuto_, isDown);
}

void HeldNotes::setPedal(bool& pedal, bool isDown) {
    pedal = isDown;
    hasPedal_ = sustain_ || sostenuto_;
    dropReleased();
}

void HeldNotes::dropReleased() {
    const Keys released = sustain_ ? Keys{} : keyIsUp_ & ~captured_;
    if (released.none())
        return;
    for (std::size_t key = 0; key < keyCount; ++key) {
        if (released[key])
            notes_[key].velocity = 0;
    }
    keyIsUp_ &= ~released;
}

void HeldNotes::releaseKeys() {
    for (std::size_t key = 0; key < keyCount; ++key)
        keyIsUp_.set(key, notes_[key].velocity > 0);
    dropReleased();
}

void HeldNotes::silence() {
    for (Note& note : notes_)
        note.velocity = 0;
    keyIsUp_.reset();
    captured_.reset();
}

std::vector<HeldNotes::Sounding> HeldNotes::sounding() const {
    std::vector<Sounding> result;
    for (std::size_t key = 0; key < keyCount; ++key) {
        if (notes_[key].velocity > 0)
            result.push_back({notes_[key], static_cast<std::uint8_t>(key), keyIsUp_[key], captured_[key]});
    }
    std::ranges::stable_sort(result, {}, [](const Sounding& sounding) { return sounding.note.tick; });
    return result;
}

} // namespace tambrel
