#pragma once

namespace tambrel {

/// The function of this name in a module of Tambrel's own, which is loaded by the first call and never
/// unloaded; null where that fails, as it does where a library is missing that the module needs. Any thread.
[[nodiscard]] void* functionOfModule(const char* module, const char* function);

} // namespace tambrel
