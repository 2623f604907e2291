#pragma once

#include <cstddef>

namespace ambrel {

/// A shared library that is opened by name while the program runs, and stays open until it ends.
/// cmake/LazyLibrary.cmake generates the tables that it fills.
class LazyLibrary {
public:
    /// Who finds the library's names beside the table.
    enum class Scope {
        itself,   ///< nobody
        everyone, ///< whatever is opened later and looks for names, as if the program was linked
    };

    /// Opens `soname` and stores the addresses of `names` in `table`, both of `count` entries.
    /// Throws LibraryError when the library or one of its functions cannot be had; the table is
    /// not complete then, and the next attempt starts anew.
    LazyLibrary(const char* soname, const char* const* names, void** table, std::size_t count,
                Scope scope);
};

} // namespace ambrel
