# install_library(TARGET NAME name FOLDER folder HEADERS header...
#                 [DEPENDENCIES text] [PC_REQUIRES packages] [PC_LIBS flags])
#
# Installs a static library for other programs: its public headers, a CMake package NAME and a
# pkg-config file. All of them find each other by relative paths, so that an installed tree may be
# moved. FOLDER is where the headers lie below the folder for headers. What the library needs
# besides is said twice: as lines of a CMake package, and as pkg-config has it.

include(CMakePackageConfigHelpers)

set(install_library_folder "${CMAKE_CURRENT_LIST_DIR}")

function(install_library target)
    cmake_parse_arguments(PARSE_ARGV 1 library "" "NAME;NAMESPACE;FOLDER;DEPENDENCIES;PC_REQUIRES;PC_LIBS"
        "HEADERS")
    set(packageFolder "${CMAKE_INSTALL_LIBDIR}/cmake/${library_NAME}")
    get_target_property(output ${target} OUTPUT_NAME)
    if(NOT output)
        set(output ${target})
    endif()

    install(TARGETS ${target} EXPORT ${library_NAME}Targets
        ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
    foreach(header IN LISTS library_HEADERS)
        get_filename_component(room "${header}" DIRECTORY)
        install(FILES "${CMAKE_CURRENT_SOURCE_DIR}/${header}"
            DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${library_FOLDER}/${room}")
    endforeach()

    install(EXPORT ${library_NAME}Targets NAMESPACE ${library_NAMESPACE}
        DESTINATION "${packageFolder}")
    configure_package_config_file("${install_library_folder}/LibraryConfig.cmake.in"
        "${CMAKE_CURRENT_BINARY_DIR}/${library_NAME}Config.cmake"
        INSTALL_DESTINATION "${packageFolder}")
    # Before 1.0 a minor version may change the interface.
    write_basic_package_version_file(
        "${CMAKE_CURRENT_BINARY_DIR}/${library_NAME}ConfigVersion.cmake"
        COMPATIBILITY SameMinorVersion)
    install(FILES
        "${CMAKE_CURRENT_BINARY_DIR}/${library_NAME}Config.cmake"
        "${CMAKE_CURRENT_BINARY_DIR}/${library_NAME}ConfigVersion.cmake"
        DESTINATION "${packageFolder}")

    # From the file's own folder and not from the prefix: where libraries lie two levels down, as in
    # lib/x86_64-linux-gnu, "pkg-config --define-prefix" takes PREFIX/lib for the prefix.
    set(packages "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig")
    file(RELATIVE_PATH library_PREFIX "${packages}" "${CMAKE_INSTALL_PREFIX}")
    file(RELATIVE_PATH library_LIBDIR "${packages}" "${CMAKE_INSTALL_FULL_LIBDIR}")
    file(RELATIVE_PATH library_INCLUDEDIR "${packages}" "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
    get_filename_component(library_INCLUDES "${library_FOLDER}" DIRECTORY)
    string(TOLOWER "${library_NAME}" file)
    configure_file("${install_library_folder}/library.pc.in"
        "${CMAKE_CURRENT_BINARY_DIR}/${file}.pc" @ONLY)
    install(FILES "${CMAKE_CURRENT_BINARY_DIR}/${file}.pc"
        DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endfunction()
