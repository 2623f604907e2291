#pragma once

namespace ambrel {

/// rename(2) that never replaces anything, not even a dangling link. 0, or the error number:
/// EEXIST when `to` is taken, EXDEV across file systems.
int renameExclusively(const char* from, const char* to) noexcept;
/// The same for two names in the open folder `folder`.
int renameExclusivelyIn(int folder, const char* from, const char* to) noexcept;

/// Exchanges two existing items in one step. 0, or the error number.
int exchangeNames(const char* left, const char* right) noexcept;

} // namespace ambrel
