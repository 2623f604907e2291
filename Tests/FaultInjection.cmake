# KORVANE_WRAPPED_CALLS: linker options that lead every call listed in Support/WrappedCalls.def
# through a function of ours, which can make it fail.
file(STRINGS "${CMAKE_CURRENT_LIST_DIR}/Support/WrappedCalls.def" wrapped REGEX "^WRAP")
set(KORVANE_WRAPPED_CALLS "")
foreach(line IN LISTS wrapped)
    if(NOT line MATCHES "^WRAP[A-Z_]*\\(([^,()]+, )?([a-z0-9_]+)")
        message(FATAL_ERROR "Cannot read the wrapped call in: ${line}")
    endif()
    list(APPEND KORVANE_WRAPPED_CALLS "LINKER:--wrap=${CMAKE_MATCH_2}")
endforeach()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
    "${CMAKE_CURRENT_LIST_DIR}/Support/WrappedCalls.def")
