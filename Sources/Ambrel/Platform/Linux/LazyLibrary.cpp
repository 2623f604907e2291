#include "Ambrel/Platform/Linux/LazyLibrary.h"

#include "Ambrel/Platform/LibraryError.h"

#include <algorithm>
#include <dlfcn.h>

namespace ambrel {

namespace {

[[noreturn]] void throwLoaderError(const char* soname) {
    const char* reason = dlerror();
    throw LibraryError(soname, reason != nullptr ? reason : "unknown reason");
}

} // namespace

// Not closed at the program's end: its functions may keep state for as long as that runs.
void LazyLibrary::open() {
    const std::lock_guard lock(mutex_);
    if (handle_ != nullptr) return;
    void* handle =
        dlopen(soname_, RTLD_NOW | (scope_ == Scope::everyone ? RTLD_GLOBAL : RTLD_LOCAL));
    if (handle == nullptr) throwLoaderError(soname_);
    for (std::size_t i = 0; i < count_; ++i) {
        table_[i] = dlsym(handle, names_[i]);
        if (table_[i] == nullptr) throwLoaderError(soname_);
    }
    handle_ = handle;
}

void LazyLibrary::close() noexcept {
    const std::lock_guard lock(mutex_);
    if (handle_ == nullptr) return;
    std::fill_n(table_, count_, nullptr);
    dlclose(handle_);
    handle_ = nullptr;
}

} // namespace ambrel
