#pragma once

#include "CommandLine.h"

#include <string>

namespace tambrel {

class MainViewController;

/// --screenshot: a picture of the window with the song, or with the error in its place, is written instead of
/// running a session. Main thread only.
class PictureMode {
public:
    explicit PictureMode(const CommandLine& commandLine) : commandLine_(commandLine) {}

    [[nodiscard]] bool isOn() const { return !commandLine_.screenshot.empty(); }
    /// Takes the picture now if no song is going to be loaded.
    void begin(MainViewController& controller) const;
    /// Writes the picture and ends the program; `failure` is empty when the song is there.
    void take(MainViewController& controller, const std::string& failure) const;

private:
    const CommandLine& commandLine_;
};

} // namespace tambrel
