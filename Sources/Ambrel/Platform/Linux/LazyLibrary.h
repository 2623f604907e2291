#pragma once

#include <cstddef>
#include <mutex>

namespace ambrel {

/// A shared library that is opened by name while the program runs. It stays open until the program
/// ends unless it is closed before. cmake/LazyLibrary.cmake generates the tables that it fills.
class LazyLibrary {
public:
    /// Who finds the library's names beside the table.
    enum class Scope {
        itself,   ///< nobody
        everyone, ///< whatever is opened later and looks for names, as if the program was linked
    };

    /// The library `soname`; `names` and `table` have `count` entries.
    LazyLibrary(const char* soname, const char* const* names, void** table, std::size_t count,
                Scope scope)
        : soname_(soname), names_(names), table_(table), count_(count), scope_(scope) {}

    /// Opens it, unless it is open, and stores the addresses of the names in the table. Throws
    /// LibraryError when the library or one of its functions cannot be had; the table is not
    /// complete then, and the next attempt starts anew.
    void open();
    /// Gives back its memory, where nothing else has it open. Nothing of it may be in use.
    void close() noexcept;

private:
    const char* soname_;
    const char* const* names_;
    void** table_;
    std::size_t count_;
    Scope scope_;
    std::mutex mutex_;
    void* handle_ = nullptr; ///< null while the table is not complete
};

} // namespace ambrel
