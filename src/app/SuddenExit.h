#pragma once

#include <functional>

namespace tambrel {

/// While it lives, an exit of the process from within first calls a function. Qt exits where the
/// display is gone, as it may be when a session ends. One at a time; main thread.
class SuddenExit {
public:
    explicit SuddenExit(std::function<void()> call);
    ~SuddenExit();
    SuddenExit(const SuddenExit&) = delete;
    SuddenExit& operator=(const SuddenExit&) = delete;
};

} // namespace tambrel
