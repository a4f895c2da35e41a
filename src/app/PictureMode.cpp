#include "PictureMode.h"

#include "AppDelegate.h"
#include "NewFile.h"

#include <QApplication>
#include <QBuffer>
#include <QPixmap>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <stdexcept>

namespace tambrel {

void PictureMode::begin(MainViewController& controller) {
    if (std::ranges::none_of(commandLine_.files, AppDelegate::isSupportedMIDIURL))
        end(controller, commandLine_.files.empty() ? "" : "There is no song in the picture.");
}

void PictureMode::take(MainViewController& controller, const std::string& failure) {
    if (!failure.empty())
        return end(controller, failure);
    if (commandLine_.at > 0)
        controller.seek(commandLine_.at);
    if (commandLine_.playing)
        play(controller);
    else
        end(controller, {});
}

// A sound bank may have to be loaded first; a failure to play comes to take().
void PictureMode::play(MainViewController& controller) {
    using namespace std::chrono_literals;
    constexpr double seconds = 0.5; // The activity bars have left their first step by then.
    controller.playPause();
    playing_.callOnTimeout(&controller.view(), [this, &controller, from = controller.player().position()] {
        if (controller.player().mode() != PlaybackMode::playing)
            end(controller, "The song was over before the picture was taken.");
        else if (controller.player().position() >= from + seconds)
            end(controller, {});
    });
    playing_.start(20ms);
}

void PictureMode::end(MainViewController& controller, const std::string& failure) {
    playing_.stop();
    int status = EXIT_FAILURE;
    if (failure.empty())
        status = EXIT_SUCCESS;
    else
        complain(failure);
    try {
        write(controller);
    } catch (const std::exception& error) {
        complain(commandLine_.screenshot.string() + ": " + error.what());
        status = EXIT_FAILURE;
    }
    QApplication::exit(status);
}

void PictureMode::write(MainViewController& controller) const {
    QByteArray picture;
    QBuffer buffer(&picture);
    if (!buffer.open(QIODevice::WriteOnly) || !controller.view().grab().save(&buffer, "PNG"))
        throw std::runtime_error("The picture could not be made.");
    NewFile file(commandLine_.screenshot);
    file.write({reinterpret_cast<const unsigned char*>(picture.constData()),
                static_cast<std::size_t>(picture.size())});
    file.keep(NewFile::Existing::replace);
}

} // namespace tambrel
