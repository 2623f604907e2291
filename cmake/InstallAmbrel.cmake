# Installs the library for other programs: its public headers, a CMake package and a pkg-config
# file. All of them find each other by relative paths, so that an installed tree may be moved.

set(AMBREL_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/Ambrel")
set(AMBREL_PKGCONFIG_DIR "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

install(TARGETS Ambrel EXPORT AmbrelTargets ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")

# What lies in these two folders is public; the folders below Platform hold the backends, and
# Support what the library needs for itself, but for the pictures and shapes that the drawing of
# labels is told in.
foreach(folder IN ITEMS Ambrel Ambrel/Platform)
    file(GLOB headers CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/Sources/${folder}/*.h")
    install(FILES ${headers} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${folder}")
endforeach()

foreach(header IN ITEMS Canvas Icns Image Outline)
    install(FILES "${PROJECT_SOURCE_DIR}/Sources/Ambrel/Support/${header}.h"
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/Ambrel/Support")
endforeach()

install(EXPORT AmbrelTargets NAMESPACE Ambrel:: DESTINATION "${AMBREL_PACKAGE_DIR}")
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/AmbrelConfig.cmake.in"
    "${CMAKE_CURRENT_BINARY_DIR}/AmbrelConfig.cmake" INSTALL_DESTINATION "${AMBREL_PACKAGE_DIR}")
# Before 1.0 a minor version may change the interface.
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/AmbrelConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES
    "${CMAKE_CURRENT_BINARY_DIR}/AmbrelConfig.cmake"
    "${CMAKE_CURRENT_BINARY_DIR}/AmbrelConfigVersion.cmake"
    DESTINATION "${AMBREL_PACKAGE_DIR}")

# From the file's own folder and not from the prefix: where libraries lie two levels down, as in
# lib/x86_64-linux-gnu, "pkg-config --define-prefix" takes PREFIX/lib for the prefix.
set(ambrel_pc_folder "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH AMBREL_PC_PREFIX "${ambrel_pc_folder}" "${CMAKE_INSTALL_PREFIX}")
file(RELATIVE_PATH AMBREL_PC_LIBDIR "${ambrel_pc_folder}" "${CMAKE_INSTALL_FULL_LIBDIR}")
file(RELATIVE_PATH AMBREL_PC_INCLUDEDIR "${ambrel_pc_folder}" "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
configure_file("${CMAKE_CURRENT_LIST_DIR}/ambrel.pc.in" "${CMAKE_CURRENT_BINARY_DIR}/ambrel.pc"
    @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/ambrel.pc" DESTINATION "${AMBREL_PKGCONFIG_DIR}")
