#include "SuddenExit.h"

#include <cstdlib>
#include <utility>

namespace tambrel {
namespace {

std::function<void()>& toCall() {
    static std::function<void()> function;
    return function;
}

void callOnce() {
    if (const auto call = std::exchange(toCall(), nullptr))
        call();
}

} // namespace

SuddenExit::SuddenExit(std::function<void()> call) {
    toCall() = std::move(call);
    [[maybe_unused]] static const bool isRegistered = std::atexit(callOnce) == 0;
}

SuddenExit::~SuddenExit() {
    toCall() = nullptr;
}

} // namespace tambrel
