#pragma once

#include "MIDIMessage.h"

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tambrel {

/// Marks a value that no message has set yet.
inline constexpr std::uint8_t unsetValue = 0xFF;

struct BankSelect {
    std::uint8_t msb = unsetValue;
    std::uint8_t lsb = unsetValue;

    bool operator==(const BankSelect&) const = default;
};

/// The notes of one channel that are held at some point of a song, by their key or by a pedal; of several on
/// one key the latest. One thread at a time.
class HeldNotes {
public:
    static constexpr std::size_t keyCount = 128;

    /// What a note began with. Eight bytes.
    struct Note {
        std::uint32_t tick = 0;
        std::uint8_t velocity = 0; ///< 0 when the key has no note.
        std::uint8_t program = unsetValue;
        BankSelect bank; ///< In force when the program came.
    };
    struct Sounding {
        Note note;
        std::uint8_t key;
        bool isKeyUp;       ///< A pedal holds it.
        bool isBySostenuto; ///< It began before the sostenuto pedal that holds it.
    };

    /// A note with velocity 0 releases the key.
    void play(std::uint8_t key, Note note) {
        if (hasPedal_)
            playWithPedal(key, note);
        else
            notes_[key] = note;
    }
    void setSustain(bool isDown);
    void setSostenuto(bool isDown);
    void releaseKeys();
    void silence();

    /// In the order in which they began.
    [[nodiscard]] std::vector<Sounding> sounding() const;

private:
    using Keys = std::bitset<keyCount>;

    void playWithPedal(std::uint8_t key, Note note);
    void setPedal(bool& pedal, bool isDown);
    void dropReleased();

    std::array<Note, keyCount> notes_{};
    Keys keyIsUp_;  // While a pedal holds its note.
    Keys captured_; // By sostenuto.
    bool sustain_ = false;
    bool sostenuto_ = false;
    bool hasPedal_ = false;
};

} // namespace tambrel
