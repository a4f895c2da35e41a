#include "ModuleLoader.h"

#include <dlfcn.h>
#include <filesystem>
#include <initializer_list>
#include <system_error>

namespace tambrel {

// Beside the program in the build folder, in the library folder of the installation otherwise. Not left to
// the loader's own search path, which a sanitizer's dlopen does not know.
void* functionOfModule(const char* module, const char* function) {
    std::error_code error;
    const auto programs = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    for (const char* folder : {"lib/tambrel", TAMBREL_MODULES_FROM_PROGRAMS}) {
        const auto file = programs / folder / module;
        if (!std::filesystem::exists(file, error))
            continue;
        void* const loaded = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
        return loaded == nullptr ? nullptr : dlsym(loaded, function);
    }
    return nullptr;
}

} // namespace tambrel
