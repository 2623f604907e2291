#pragma once

namespace korvane::runner {

/// Leads GLib, and what asks it, to folders that are not there, where the home or one of the base
/// directories cannot even be looked for: a file stands on the way to it, or it is closed to this
/// user. The tool that locks the engine's processes in passes over what is not there and gives up
/// at anything else, which would end the program. The environment stays as it is.
///
/// Between GIO's opening and the first use of it.
void settleHomeFolders() noexcept;

} // namespace korvane::runner
