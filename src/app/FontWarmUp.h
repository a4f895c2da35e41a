#pragma once

#include <thread>

namespace tambrel {

/// Reads the system's fonts while the main thread is busy with the display. Start-up needs them soon, and
/// reading them takes longer than anything else of it. Nothing depends on it: who asks for a font earlier
/// waits, or reads for himself.
class FontWarmUp {
public:
    /// Begins to read the configuration. Before there is an application object.
    FontWarmUp();
    /// Begins to fill the toolkit's font database. With an application object that outlives this one.
    void fillDatabase();

private:
    std::jthread configuration_;
    std::jthread database_;
};

} // namespace tambrel
