# What the runner is made of on Linux, how it is linked and installed.

find_package(PkgConfig REQUIRED)
pkg_check_modules(gio REQUIRED gio-unix-2.0>=2.74)
pkg_check_modules(xcb REQUIRED xcb)
pkg_check_modules(xres REQUIRED xcb-res)
pkg_check_modules(webkit REQUIRED webkitgtk-6.0>=2.40 gtk4>=4.8 gtk4-unix-print x11)

target_sources(korvane-runner PRIVATE TypeNames.cpp)

# Names of its own on the session's bus: what is decided about them.
target_sources(KorvaneHosts PRIVATE
    Bus/Activation.cpp
    Bus/BusCall.cpp
    Bus/BusClient.cpp
    Bus/BusLifetime.cpp
    Bus/BusReplies.cpp
    Bus/BusRequests.cpp
    Bus/ConfiguredNames.cpp
    Bus/Conversation.cpp
    Bus/EndRequest.cpp
    Bus/Handshake.cpp
    Bus/InjectedMessage.cpp
    Bus/InstanceNames.cpp
    Bus/LeftProcesses.cpp
    Bus/MatchRule.cpp
    Bus/MessageBody.cpp
    Bus/MessageHeader.cpp
    Bus/MessageStream.cpp
    Bus/NamePolicy.cpp
    Bus/NameSignals.cpp
    Bus/NameSyntax.cpp
    Bus/OwnerTable.cpp
    Bus/PendingReplies.cpp
    Bus/PrivateNames.cpp
    Bus/ServiceFile.cpp
    Bus/ServiceManager.cpp
    Bus/ShownApplications.cpp
    Bus/ShownEntry.cpp
    Bus/Signature.cpp
    Bus/Verdict.cpp
    Bus/WireReader.cpp
    Bus/WireWriter.cpp
)
embed_text(KorvaneHosts FILE Bus/Names.txt HEADER korvane-runner/Bus/NamePolicy.h
    NAME korvane::runner::bus::sharedNames)

# What stands between an instance's programs and the user's bus.
target_sources(KorvaneHosts PRIVATE
    Bus/Linux/BusAddress.cpp
    Bus/Linux/BusProxy.cpp
    Bus/Linux/ClientLink.cpp
    Bus/Linux/Entrance.cpp
    Bus/Linux/HeldMessages.cpp
    Bus/Linux/MessageFlow.cpp
    Bus/Linux/OutputQueue.cpp
    Bus/Linux/PollLoop.cpp
    Bus/Linux/ServiceFolders.cpp
    Bus/Linux/SmallFile.cpp
    Bus/Linux/SocketEnd.cpp
)

# The process that it is in, beside the runner.
target_sources(KorvaneHosts PRIVATE
    Bus/Linux/BusHelper.cpp
    Bus/Linux/DescriptorLimit.cpp
    Bus/Linux/HelpedProcesses.cpp
    Bus/Linux/HelpedProgram.cpp
    Bus/Linux/HelperBus.cpp
    Bus/Linux/HelperChannel.cpp
    Bus/Linux/HelperSurroundings.cpp
    Bus/Linux/InstanceSocket.cpp
    Bus/Linux/OwnBusNames.cpp
    Bus/Linux/ProcessFamily.cpp
    Bus/Linux/ProgramPages.cpp
    Bus/Linux/RunnerLink.cpp
    Bus/Linux/StartedServices.cpp
    Bus/Linux/Subreaping.cpp
)

# What is asked of a desktop, with the toolkit's own headers. Nothing of it may run before main, and
# none of the toolkit's data can be used: see add_lazy_objects().
add_library(KorvaneDesktop STATIC
    Desktop/Linux/BusAddress.cpp
    Desktop/Linux/BusObject.cpp
    Desktop/Linux/CertificateFaults.cpp
    Desktop/Linux/DBusMenu.cpp
    Desktop/Linux/DBusMenuTree.cpp
    Desktop/Linux/Downloads.cpp
    Desktop/Linux/EngineSandbox.cpp
    Desktop/Linux/FindBar.cpp
    Desktop/Linux/GLibLoop.cpp
    Desktop/Linux/GVariants.cpp
    Desktop/Linux/GioDesktop.cpp
    Desktop/Linux/HomeFolders.cpp
    Desktop/Linux/JscValue.cpp
    Desktop/Linux/LauncherBadge.cpp
    Desktop/Linux/LoadedTitle.cpp
    Desktop/Linux/NotificationBanners.cpp
    Desktop/Linux/PageLoads.cpp
    Desktop/Linux/PageMessages.cpp
    Desktop/Linux/PageSteps.cpp
    Desktop/Linux/PageView.cpp
    Desktop/Linux/Permissions.cpp
    Desktop/Linux/PrintDialog.cpp
    Desktop/Linux/Questions.cpp
    Desktop/Linux/SessionBus.cpp
    Desktop/Linux/SpellChecking.cpp
    Desktop/Linux/StatusNotifierArea.cpp
    Desktop/Linux/StatusNotifierIcon.cpp
    Desktop/Linux/StatusNotifierItem.cpp
    Desktop/Linux/StatusPixels.cpp
    Desktop/Linux/SymbolicIconFolder.cpp
    Desktop/Linux/Toolkit.cpp
    Desktop/Linux/UserScripts.cpp
    Desktop/Linux/WebKitDesktop.cpp
    Desktop/Linux/WebKitWindow.cpp
    Desktop/Linux/WindowKeys.cpp
    Desktop/Linux/WindowManager.cpp
    Desktop/Linux/WindowPlace.cpp
    Desktop/Linux/X11Position.cpp
    Desktop/Linux/X11Windows.cpp
    Desktop/Linux/Zoom.cpp
)
include(EmbedText)
embed_text(KorvaneDesktop FILE Desktop/Linux/DBusMenu.xml
    HEADER korvane-runner/Desktop/Linux/BusInterfaces.h NAME korvane::runner::dbusMenuInterface)
embed_text(KorvaneDesktop FILE Desktop/Linux/StatusNotifierItem.xml
    HEADER korvane-runner/Desktop/Linux/BusInterfaces.h
    NAME korvane::runner::statusNotifierItemInterface)
target_link_libraries(KorvaneDesktop PUBLIC Ambrel)
target_include_directories(KorvaneDesktop SYSTEM PRIVATE
    ${gio_INCLUDE_DIRS} ${webkit_INCLUDE_DIRS} ${xcb_INCLUDE_DIRS} ${xres_INCLUDE_DIRS})
target_compile_options(KorvaneDesktop PRIVATE
    -ffunction-sections -fdata-sections $<$<CONFIG:Release>:-Os>)

include(LazyObjects)
add_lazy_objects(KorvaneDesktop
    Gio "${gio_LINK_LIBRARIES}" Xcb "${xcb_LINK_LIBRARIES}" XRes "${xres_LINK_LIBRARIES}"
    WebKit "${webkit_LINK_LIBRARIES}")

target_link_libraries(korvane-runner PRIVATE KorvaneDesktop-late)

# One file that works when it is copied alone, and starts fast: the C++ runtime inside, nothing that
# is not called, and no library but the C runtime's.
target_link_options(korvane-runner PRIVATE
    -static-libstdc++ -static-libgcc LINKER:--gc-sections LINKER:--as-needed
    $<$<CONFIG:Release>:-s>)

# A runner lies in every wrapper, and a twentieth of it would be addresses to adjust at the start.
# Tried by running a program: there are linkers that write what the C library does not read yet.
if(NOT CMAKE_CROSSCOMPILING)
    include(CheckCXXSourceRuns)
    set(CMAKE_REQUIRED_LINK_OPTIONS "LINKER:-z,pack-relative-relocs")
    check_cxx_source_runs(
        "static int number = 0; int* volatile pointer = &number; int main() { return *pointer; }"
        KORVANE_PACKED_RELOCATIONS)
    unset(CMAKE_REQUIRED_LINK_OPTIONS)
    if(KORVANE_PACKED_RELOCATIONS)
        target_link_options(korvane-runner PRIVATE LINKER:-z,pack-relative-relocs)
    endif()
endif()

# Where a manager in PREFIX/bin looks for it; it is no program for people to start.
install(TARGETS korvane-runner RUNTIME DESTINATION lib/korvane)
