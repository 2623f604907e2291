# add_lazy_objects(TARGET Name libraries [Name libraries]...)
#
# Lets the objects of TARGET, a static library that is compiled with the ordinary headers of other
# libraries and is linked to none of them, become part of a program in two ways:
#   TARGET-late      the program is not linked to the libraries either. A step of the build takes
#                    the names that the objects ask for and the libraries have, and generates for
#                    each a function of that name, a jump through a table.
#   TARGET-linked    the program is linked to the libraries, as usual.
# LazyName.h is for TARGET to include and declares loadName(), which in the first case opens the
# first of the libraries called Name, fills the table from it and what it needs itself, and throws
# where that fails; in the second it has nothing to do. Calling a function before ends the program.
#
# `libraries` is a list of files in quotes. A name goes to the first Name of which a library has it.
# Names in C++ are never looked for. The build fails when one of the names is data, which cannot be
# reached through a jump; the linker tells of a name that nobody has.
include(LazyLibrary)

function(add_lazy_objects target)
    set(folder "${CMAKE_CURRENT_BINARY_DIR}/${target}-lazy")
    set(tables "")
    set(settings "set(objects \"$<TARGET_FILE:${target}>\")\nset(nm \"${CMAKE_NM}\")\n")
    set(libraries "")
    set(generated "")
    set(linked "")
    set(rest ${ARGN})
    math(EXPR last "${ARGC} - 1")
    foreach(place RANGE 1 ${last} 2)
        math(EXPR next "${place} + 1")
        set(lazy_NAME "${ARGV${place}}")
        set(files "${ARGV${next}}")
        list(GET files 0 first)
        read_soname("${first}" soname)
        list(APPEND tables "${lazy_NAME}")
        list(APPEND libraries ${files})
        string(APPEND settings "set(libraries_${lazy_NAME} \"${files}\")\n"
            "set(soname_${lazy_NAME} \"${soname}\")\n")
        configure_file("${CMAKE_CURRENT_FUNCTION_LIST_DIR}/LazyObjects.h.in"
            "${folder}/Lazy${lazy_NAME}.h" @ONLY)
        configure_file("${CMAKE_CURRENT_FUNCTION_LIST_DIR}/LinkedObjects.cpp.in"
            "${folder}/Linked${lazy_NAME}.cpp" @ONLY)
        list(APPEND generated "${folder}/Lazy${lazy_NAME}.S" "${folder}/Lazy${lazy_NAME}.cpp")
        list(APPEND linked "${folder}/Linked${lazy_NAME}.cpp")
    endforeach()
    list(REMOVE_DUPLICATES libraries)
    file(GENERATE OUTPUT "${folder}/settings.cmake"
        CONTENT "${settings}set(tables \"${tables}\")\nset(folder \"${folder}\")\n")

    # What has not changed is not written again.
    set(script "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/WriteLazyTables.cmake")
    add_custom_command(OUTPUT ${generated}
        COMMAND "${CMAKE_COMMAND}" -P "${script}" "${folder}/settings.cmake"
        DEPENDS ${target} "${script}" "${folder}/settings.cmake" ${libraries}
            "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/LazyLibrary.S.in"
            "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/LazyLibrary.cpp.in"
        COMMENT "Collecting the functions that ${target} calls late"
        VERBATIM)

    target_include_directories(${target} PRIVATE "${folder}")
    add_library(${target}-tables STATIC ${generated})
    target_include_directories(${target}-tables PRIVATE "${folder}")
    target_link_libraries(${target}-tables PRIVATE Ambrel)
    add_library(${target}-late INTERFACE)
    target_link_libraries(${target}-late INTERFACE ${target} ${target}-tables)

    add_library(${target}-no-tables STATIC EXCLUDE_FROM_ALL ${linked})
    target_include_directories(${target}-no-tables PRIVATE "${folder}")
    add_library(${target}-linked INTERFACE)
    target_link_libraries(${target}-linked INTERFACE ${target} ${target}-no-tables ${libraries})
    # Only to those that the program calls: it may need a few of the objects alone.
    target_link_options(${target}-linked INTERFACE LINKER:--as-needed)
endfunction()
