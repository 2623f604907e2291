# What the tests of the command need on Linux.

# Reads desktop entries as desktops do.
pkg_check_modules(gio REQUIRED IMPORTED_TARGET gio-unix-2.0)
target_sources(KorvaneTests PRIVATE ForeignEntryReader.cpp)
target_link_libraries(KorvaneTests PRIVATE PkgConfig::gio)

# Libraries that are toolkits by nothing but their name, linked directly and through another one.
add_library(korvane-test-gtk SHARED Toolkit.cpp)
set_target_properties(korvane-test-gtk PROPERTIES OUTPUT_NAME gtk-3 SOVERSION 0)
add_library(korvane-test-qt SHARED Toolkit.cpp)
set_target_properties(korvane-test-qt PROPERTIES OUTPUT_NAME Qt5Gui SOVERSION 5)
add_library(korvane-test-between SHARED Toolkit.cpp)
target_link_libraries(korvane-test-between PRIVATE -Wl,--no-as-needed korvane-test-gtk)
add_executable(korvane-test-indirect-program ToolkitProgram.cpp)
target_link_libraries(korvane-test-indirect-program
    PRIVATE -Wl,--no-as-needed korvane-test-between)
add_executable(korvane-test-qt-program ToolkitProgram.cpp)
target_link_libraries(korvane-test-qt-program PRIVATE -Wl,--no-as-needed korvane-test-qt)
add_executable(korvane-test-bus-program BusProgram.cpp)
target_link_libraries(korvane-test-bus-program PRIVATE korvane-test-gtk)
# Calls what gives a Qt program a socket, with and without what KDE's have for the bus.
add_executable(korvane-test-socket-program SocketProgram.cpp)
target_link_libraries(korvane-test-socket-program PRIVATE korvane-test-qt)
add_executable(korvane-test-service-program SocketProgram.cpp)
target_compile_definitions(korvane-test-service-program PRIVATE HAS_BUS_SERVICE)
target_link_libraries(korvane-test-service-program PRIVATE korvane-test-qt)
target_compile_definitions(KorvaneTests PRIVATE
    KORVANE_TEST_SERVICE_PROGRAM="$<TARGET_FILE:korvane-test-service-program>"
    KORVANE_TEST_SOCKET_PROGRAM="$<TARGET_FILE:korvane-test-socket-program>"
    KORVANE_TEST_INDIRECT_PROGRAM="$<TARGET_FILE:korvane-test-indirect-program>"
    KORVANE_TEST_BUS_PROGRAM="$<TARGET_FILE:korvane-test-bus-program>"
    KORVANE_TEST_QT_PROGRAM="$<TARGET_FILE:korvane-test-qt-program>")
add_dependencies(KorvaneTests
    korvane-test-bus-program korvane-test-indirect-program korvane-test-qt-program
    korvane-test-service-program korvane-test-socket-program)
