#pragma once

namespace tambrel {

/// Deleter of a C library's objects, for std::unique_ptr: calls the library's own function. Any thread.
template<auto destroy>
struct DestroyedBy {
    template<class Object>
    void operator()(Object* object) const {
        destroy(object);
    }
};

} // namespace tambrel
