#include "Ambrel/Platform/Linux/LazyLibrary.h"

#include "Ambrel/Platform/LibraryError.h"

#include <dlfcn.h>

namespace ambrel {

namespace {

[[noreturn]] void throwLoaderError(const char* soname) {
    const char* reason = dlerror();
    throw LibraryError(soname, reason != nullptr ? reason : "unknown reason");
}

} // namespace

LazyLibrary::LazyLibrary(const char* soname, const char* const* names, void** table,
                         std::size_t count, Scope scope) {
    // Never closed: its functions may keep state for as long as the program runs.
    void* handle = dlopen(soname, RTLD_NOW | (scope == Scope::everyone ? RTLD_GLOBAL : RTLD_LOCAL));
    if (handle == nullptr) throwLoaderError(soname);
    for (std::size_t i = 0; i < count; ++i) {
        table[i] = dlsym(handle, names[i]);
        if (table[i] == nullptr) throwLoaderError(soname);
    }
}

} // namespace ambrel
