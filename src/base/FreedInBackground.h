#pragma once

#include <memory>
#include <utility>

namespace tambrel {

/// Lets go of an object on a background thread that does nothing else. Any thread.
void freeInBackground(std::shared_ptr<const void> object) noexcept;

/// The same object, which the background thread frees once all have let go of it: that takes long for
/// hundreds of megabytes. Any thread.
template<class T>
[[nodiscard]] std::shared_ptr<T> freedInBackground(std::shared_ptr<T> object) {
    T* const address = object.get();
    return {address, [object = std::move(object)](T*) mutable { freeInBackground(std::move(object)); }};
}

} // namespace tambrel
