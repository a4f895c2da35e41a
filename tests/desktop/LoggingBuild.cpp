#include "ApplicationInfo.h"

// The information list of a build for beta testers, in place of that of this build.
const tambrel::ApplicationInfo& tambrel::ApplicationInfo::current() {
    static const ApplicationInfo info{.name = "Tambrel",
                                      .identifier = "software.kestrune.tambrel-tests.beta"};
    return info;
}
