# read_soname(file result): the name under which a library is opened.
function(read_soname library result)
    execute_process(COMMAND "${CMAKE_READELF}" -d "${library}"
        OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)
    if(NOT dynamic MATCHES "SONAME\\)[^[]*\\[([^]]+)\\]")
        message(FATAL_ERROR "${library} has no soname.")
    endif()
    set(${result} "${CMAKE_MATCH_1}" PARENT_SCOPE)
endfunction()

# add_lazy_library(TARGET NAME Name LIBRARY path | SONAME name
#                  [INCLUDE_DIRECTORIES dir...] FUNCTIONS function...)
#
# Lets TARGET call FUNCTIONS of a shared library without being linked to it. The library is an
# installed file, or known by the name under which it is opened. Generates
#   LazyName.h    to be included before the library's own headers: it renames each function, so
#                 that their declarations, signatures included, come from the real headers;
#   LazyName.S    the functions under those names, each a jump through a table;
#   LazyName.cpp  loadName(), which fills the table when it is called for the first time, and
#                 unloadName(), after which the next call is the first again.
# Calling a function before loadName() ends the program. Names carry the library's, so that two lists
# may hold one function; one source file cannot include both headers then.
function(add_lazy_library target)
    cmake_parse_arguments(PARSE_ARGV 1 lazy "" "NAME;LIBRARY;SONAME" "INCLUDE_DIRECTORIES;FUNCTIONS")

    set(soname "${lazy_SONAME}")
    if(lazy_LIBRARY)
        read_soname("${lazy_LIBRARY}" soname)
    endif()

    set(renames "")
    set(stubs "")
    set(names "")
    set(index 0)
    foreach(function IN LISTS lazy_FUNCTIONS)
        string(APPEND renames "#define ${function} ambrel_lazy_${lazy_NAME}_${function}\n")
        string(APPEND stubs "STUB ambrel_lazy_${lazy_NAME}_${function}, ${index}\n")
        string(APPEND names "    \"${function}\",\n")
        math(EXPR index "${index} + 1")
    endforeach()

    set(folder "${CMAKE_CURRENT_BINARY_DIR}/LazyLibraries")
    set(lazy_TABLE "ambrel_lazy_table_${lazy_NAME}")
    set(lazy_SCOPE itself)
    foreach(kind h S cpp)
        configure_file("${CMAKE_CURRENT_FUNCTION_LIST_DIR}/LazyLibrary.${kind}.in"
            "${folder}/Lazy${lazy_NAME}.${kind}" @ONLY)
    endforeach()
    target_sources(${target} PRIVATE "${folder}/Lazy${lazy_NAME}.S" "${folder}/Lazy${lazy_NAME}.cpp")
    target_include_directories(${target} PRIVATE "${folder}")
    target_include_directories(${target} SYSTEM PRIVATE ${lazy_INCLUDE_DIRECTORIES})
endfunction()
