# cmake -P WriteLazyTables.cmake SETTINGS
#
# Writes LazyName.S and LazyName.cpp for each of `tables` into `folder`: the functions that
# `objects`, an archive, asks for and libraries_Name have. See add_lazy_objects().
cmake_minimum_required(VERSION 3.25)
include("${CMAKE_ARGV3}")

# symbols_of(result file... [option]): lines of "name type …", without the versions of names.
function(symbols_of result)
    execute_process(COMMAND "${nm}" -P ${ARGN} OUTPUT_VARIABLE lines COMMAND_ERROR_IS_FATAL ANY)
    # Lines that name a file, which may have brackets in them.
    string(REGEX REPLACE "[^\n]*:\n" "\n" lines "${lines}")
    string(REGEX REPLACE "@+[^ \n]*" "" lines "${lines}")
    set(${result} "${lines}" PARENT_SCOPE)
endfunction()

# What the objects ask for, and do not have themselves.
symbols_of(symbols "${objects}")
string(REGEX MATCHALL "[^ \n]+ U" wanted "${symbols}")
string(REGEX MATCHALL "[^ \n]+ [A-TV-Z] " own "${symbols}")
foreach(list wanted own)
    list(TRANSFORM ${list} REPLACE " .*" "")
    list(FILTER ${list} EXCLUDE REGEX "^_Z")
    list(REMOVE_DUPLICATES ${list})
endforeach()
list(REMOVE_ITEM wanted ${own})
list(SORT wanted)

foreach(table IN LISTS tables)
    set(functions_${table} "")
    symbols_of(symbols -D --defined-only ${libraries_${table}})
    string(REGEX MATCHALL "[^ \n]+ [A-Za-z] " symbols "${symbols}")
    foreach(symbol IN LISTS symbols)
        string(REGEX MATCH "^([^ ]+) ([A-Za-z])" ignored "${symbol}")
        if(NOT DEFINED "table_${CMAKE_MATCH_1}")
            set("table_${CMAKE_MATCH_1}" ${table})
            set("type_${CMAKE_MATCH_1}" ${CMAKE_MATCH_2})
        endif()
    endforeach()
endforeach()

foreach(name IN LISTS wanted)
    if(DEFINED "table_${name}")
        # An indirect function ("i") is called like any other.
        if(NOT type_${name} MATCHES "^[TWi]$")
            message(FATAL_ERROR "${name} is data of a library that is opened late, which objects "
                "of ${objects} use. Only functions can be reached.")
        endif()
        list(APPEND functions_${table_${name}} ${name})
    endif()
endforeach()

foreach(lazy_NAME IN LISTS tables)
    set(soname "${soname_${lazy_NAME}}")
    set(lazy_TABLE "ambrel_lazy_table_${lazy_NAME}")
    set(lazy_SCOPE everyone)
    set(stubs "")
    set(names "")
    set(index 0)
    foreach(name IN LISTS functions_${lazy_NAME})
        string(APPEND stubs "STUB ${name}, ${index}\n")
        string(APPEND names "    \"${name}\",\n")
        math(EXPR index "${index} + 1")
    endforeach()
    foreach(kind S cpp)
        configure_file("${CMAKE_CURRENT_LIST_DIR}/LazyLibrary.${kind}.in"
            "${folder}/Lazy${lazy_NAME}.${kind}" @ONLY)
    endforeach()
endforeach()
