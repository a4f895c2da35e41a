#include "PictureMode.h"

#include "AppDelegate.h"
#include "QtText.h"

#include <QApplication>
#include <QPixmap>

#include <algorithm>
#include <cstdlib>

namespace tambrel {

void PictureMode::begin(MainViewController& controller) const {
    if (std::ranges::none_of(commandLine_.files, AppDelegate::isSupportedMIDIURL))
        take(controller, commandLine_.files.empty() ? "" : "There is no song in the picture.");
}

void PictureMode::take(MainViewController& controller, const std::string& failure) const {
    if (!failure.empty())
        complain(failure);
    else if (commandLine_.at > 0)
        controller.seek(commandLine_.at);
    const auto file = toQString(commandLine_.screenshot.string());
    const bool written = controller.view().grab().save(file, "PNG");
    if (!written)
        complain(commandLine_.screenshot.string() + ": The picture could not be written.");
    QApplication::exit(written && failure.empty() ? EXIT_SUCCESS : EXIT_FAILURE);
}

} // namespace tambrel
