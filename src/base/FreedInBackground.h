#pragma once

#include <memory>
#include <utility>

namespace tambrel {

/// Lets go of an object on a thread that is there for that alone. Any thread.
void freeInBackground(std::shared_ptr<const void> object) noexcept;

/// The same object, to be freed in the background: hundreds of megabytes take so long that whoever lets go of
/// them last should not wait for it. Any thread.
template<class T>
[[nodiscard]] std::shared_ptr<T> freedInBackground(std::shared_ptr<T> object) {
    T* const address = object.get();
    return {address, [object = std::move(object)](T*) mutable { freeInBackground(std::move(object)); }};
}

} // namespace tambrel
