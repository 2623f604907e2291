# How the runner is linked and installed on Linux.

# One file that works when it is copied alone, and starts fast: the C++ runtime inside, nothing that
# is not called, and no library but the C runtime's.
target_link_options(korvane-runner PRIVATE
    -static-libstdc++ -static-libgcc LINKER:--gc-sections LINKER:--as-needed
    $<$<CONFIG:Release>:-s>)

# Where a manager in PREFIX/bin looks for it; it is no program for people to start.
install(TARGETS korvane-runner RUNTIME DESTINATION lib/korvane)
