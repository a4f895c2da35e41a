#include "FontWarmUp.h"

#include <QFontDatabase>

#include <fontconfig/fontconfig.h>

namespace tambrel {

FontWarmUp::FontWarmUp() : configuration_([] { FcInit(); }) {}

void FontWarmUp::fillDatabase() {
    configuration_.join(); // Two at once would both read it.
    database_ = std::jthread([] { static_cast<void>(QFontDatabase::hasFamily("")); });
}

} // namespace tambrel
