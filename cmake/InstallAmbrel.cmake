# Installs the library for other programs: its public headers, a CMake package and a pkg-config
# file. All of them find each other by relative paths, so that an installed tree may be moved. What
# the library needs besides, its file for the system has set: AMBREL_DEPENDENCIES and AMBREL_PC_*.

set(AMBREL_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/Ambrel")
set(AMBREL_PKGCONFIG_DIR "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

install(TARGETS Ambrel EXPORT AmbrelTargets ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")

# What other programs should use, with what those headers include. The rest is the library's own.
set(AMBREL_PUBLIC_HEADERS
    Application/AppBundle.h
    Application/AppCatalog.h
    Application/AppEngine.h
    Application/AppProfile.h
    Base/CodingError.h
    Base/Path.h
    Base/RawValue.h
    Graphics/Canvas.h
    Graphics/Image.h
    Graphics/Outline.h
    Icon/IconComposer.h
    Instance/BundleLayout.h
    Instance/DesktopId.h
    Instance/InstanceConfig.h
    Instance/InstanceRegistry.h
    Instance/ResolvedInstance.h
    Instance/Strategy.h
    Launch/InstanceLauncher.h
    Launch/LaunchError.h
    Platform/ChildProcess.h
    Platform/FileError.h
    Platform/FileManager.h
    Platform/Images.h
    Platform/LibraryError.h
    Platform/MainBundle.h
    Platform/OwnedFd.h
    Platform/ProcessEnvironment.h
    Platform/PropertyList.h
    Platform/SystemTools.h
    Platform/UserPlaces.h
    Web/WebBadge.h
    Wrapper/RunnerLocator.h
    Wrapper/WrapperFactory.h
    Wrapper/WrapperGenerator.h
)
foreach(header IN LISTS AMBREL_PUBLIC_HEADERS)
    get_filename_component(room "${header}" DIRECTORY)
    install(FILES "${PROJECT_SOURCE_DIR}/Sources/Ambrel/${header}"
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/Ambrel/${room}")
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
