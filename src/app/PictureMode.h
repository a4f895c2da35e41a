#pragma once

#include "CommandLine.h"

#include <QTimer>

#include <string>

namespace tambrel {

class MainViewController;

/// --screenshot: a picture of the window with the song, or with the error in its place, is written instead of
/// running a session. With --playing the song has played for half a second by then. Main thread only.
class PictureMode {
public:
    explicit PictureMode(const CommandLine& commandLine) : commandLine_(commandLine) {}

    [[nodiscard]] bool isOn() const { return !commandLine_.screenshot.empty(); }
    /// Takes the picture now if no song is going to be loaded.
    void begin(MainViewController& controller);
    /// Writes the picture and ends the program; `failure` is empty when the song is there.
    void take(MainViewController& controller, const std::string& failure);

private:
    void play(MainViewController& controller);
    void end(MainViewController& controller, const std::string& failure);
    void write(MainViewController& controller) const;

    const CommandLine& commandLine_;
    QTimer playing_; // Until the song has played long enough.
};

} // namespace tambrel
