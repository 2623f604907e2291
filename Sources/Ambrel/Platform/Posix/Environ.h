#pragma once

/// This process's environment, terminated by a null pointer. POSIX leaves its declaration to
/// whoever uses it, and not every system's headers have one.
extern "C" char** environ;
