# The tests of what only Linux has, and what the others need of it.

find_package(ICU 72 REQUIRED COMPONENTS i18n uc)
find_package(PkgConfig REQUIRED)

# The fonts are those of one package, so that labels look the same on every machine.
find_path(KORVANE_TEST_FONTS LiberationSans-Bold.ttf REQUIRED
    PATHS /usr/share/fonts/truetype/liberation2 /usr/share/fonts/truetype/liberation)
set_source_files_properties(Support/Pictures.cpp PROPERTIES
    COMPILE_DEFINITIONS KORVANE_TEST_FONTS="${KORVANE_TEST_FONTS}")

target_sources(AmbrelTests PRIVATE
    Ambrel/Home/Linux/DesktopAccessTests.cpp
    Ambrel/Home/Linux/UserFoldersTests.cpp
    Ambrel/Platform/Linux/LazyAnswers/First.cpp
    Ambrel/Platform/Linux/LazyAnswers/Second.cpp
    Ambrel/Platform/Linux/LazyLibraryTests.cpp
    Ambrel/Platform/Linux/MainBundleTests.cpp
    Ambrel/Platform/Linux/ProcessNameTests.cpp
    Ambrel/Platform/Linux/TextTests.cpp
)
target_link_libraries(AmbrelTests PRIVATE ICU::i18n ICU::uc)

# Two libraries with a function of one name, which are opened when first used.
include(LazyLibrary)
foreach(answer First=1 Second=2)
    string(REGEX MATCH "(.*)=(.*)" ignored "${answer}")
    set(name ${CMAKE_MATCH_1})
    add_library(korvane-test-answer-${name} SHARED Ambrel/Platform/Linux/LazyAnswers/Answer.cpp)
    target_compile_definitions(korvane-test-answer-${name} PRIVATE
        KORVANE_TEST_ANSWER=${CMAKE_MATCH_2})
    # By its path: under a sanitizer a library is opened for this program by the sanitizer's.
    add_lazy_library(AmbrelTests NAME Answer${name}
        SONAME "${CMAKE_CURRENT_BINARY_DIR}/libkorvane-test-answer-${name}.so"
        FUNCTIONS lazyAnswer)
    add_dependencies(AmbrelTests korvane-test-answer-${name})
endforeach()

target_sources(ManagerTests PRIVATE
    Manager/Operations/Linux/DeletionTests.cpp
    Manager/Operations/Linux/EditingTests.cpp
    Manager/Programs/Linux/DesktopEntryTests.cpp
    Manager/Rules/Linux/NamespaceTests.cpp
)

pkg_check_modules(glib REQUIRED IMPORTED_TARGET gio-unix-2.0)
pkg_check_modules(engine REQUIRED webkitgtk-6.0)
list(GET glib_LINK_LIBRARIES 0 gioLibrary)
list(GET engine_LINK_LIBRARIES 0 engineLibrary)
add_executable(korvane-test-loop korvane-runner/Desktop/Linux/LoopProgram.cpp)
target_link_libraries(korvane-test-loop PRIVATE
    KorvaneHosts KorvaneDesktop-linked PkgConfig::glib)
target_compile_definitions(korvane-test-loop PRIVATE
    KORVANE_TEST_PROBE="$<TARGET_FILE:korvane-test-probe>")

# Linked as the runner is.
add_executable(korvane-test-late korvane-runner/Desktop/Linux/LateProgram.cpp)
target_link_libraries(korvane-test-late PRIVATE KorvaneDesktop-late)

add_executable(korvane-test-windows korvane-runner/Desktop/Linux/WindowsProgram.cpp)
target_link_libraries(korvane-test-windows PRIVATE KorvaneDesktop-late)

add_library(korvane-test-late-start MODULE korvane-runner/Desktop/Linux/LateStart.cpp)
target_link_libraries(korvane-test-late-start PRIVATE ${CMAKE_DL_LIBS})

target_sources(RunnerTests PRIVATE
    korvane-runner/Desktop/Linux/BusAddressTests.cpp
    korvane-runner/Desktop/Linux/BusObjectTests.cpp
    korvane-runner/Desktop/Linux/DBusMenuTests.cpp
    korvane-runner/Desktop/Linux/EngineSandboxTests.cpp
    korvane-runner/Desktop/Linux/GLibLoopTests.cpp
    korvane-runner/Desktop/Linux/HomeFoldersTests.cpp
    korvane-runner/Desktop/Linux/LauncherBadgeTests.cpp
    korvane-runner/Desktop/Linux/NotificationBannersTests.cpp
    korvane-runner/Desktop/Linux/PrivateBus.cpp
    korvane-runner/Desktop/Linux/RealBus.cpp
    korvane-runner/Desktop/Linux/SessionBusTests.cpp
    korvane-runner/Desktop/Linux/StatusNotifierIconTests.cpp
    korvane-runner/Desktop/Linux/StatusNotifierItemTests.cpp
    korvane-runner/Desktop/Linux/ToolkitTests.cpp
    korvane-runner/Desktop/Linux/X11WindowsTests.cpp
)
target_link_libraries(RunnerTests PRIVATE KorvaneDesktop-linked PkgConfig::glib)
add_dependencies(RunnerTests korvane-test-late korvane-test-loop)

# What is decided about messages of the session's bus, without a bus.
add_doctest(BusTests
    korvane-runner/Bus/ActivationTests.cpp
    korvane-runner/Bus/BusLifetimeTests.cpp
    korvane-runner/Bus/BusRepliesTests.cpp
    korvane-runner/Bus/BusRequestsTests.cpp
    korvane-runner/Bus/ConfiguredNamesTests.cpp
    korvane-runner/Bus/ConversationTests.cpp
    korvane-runner/Bus/EndRequestTests.cpp
    korvane-runner/Bus/HandshakeTests.cpp
    korvane-runner/Bus/InstanceNamesTests.cpp
    korvane-runner/Bus/LeftProcessesTests.cpp
    korvane-runner/Bus/MatchRuleTests.cpp
    korvane-runner/Bus/MessageBodyTests.cpp
    korvane-runner/Bus/MessageHeaderTests.cpp
    korvane-runner/Bus/MessageStreamTests.cpp
    korvane-runner/Bus/Messages.cpp
    korvane-runner/Bus/NamePolicyTests.cpp
    korvane-runner/Bus/NameSignalsTests.cpp
    korvane-runner/Bus/NameSyntaxTests.cpp
    korvane-runner/Bus/OwnerTableTests.cpp
    korvane-runner/Bus/PrivateNamesTests.cpp
    korvane-runner/Bus/RecordedMessages.cpp
    korvane-runner/Bus/ServiceFileTests.cpp
    korvane-runner/Bus/ServiceManagerTests.cpp
    korvane-runner/Bus/ShownApplicationsTests.cpp
    korvane-runner/Bus/ShownEntryTests.cpp
    korvane-runner/Bus/SignatureTests.cpp
    korvane-runner/Bus/Talk.cpp
)
target_link_libraries(BusTests PRIVATE KorvaneHosts)

# What stands between programs and a bus, with a real one.
add_doctest(BusProxyTests
    korvane-runner/Bus/Linux/ActivatedServiceTests.cpp
    korvane-runner/Bus/Linux/Allocations.cpp
    korvane-runner/Bus/Linux/BusAddressTests.cpp
    korvane-runner/Bus/Linux/BusProxyTests.cpp
    korvane-runner/Bus/Linux/DescriptorTests.cpp
    korvane-runner/Bus/Linux/EntranceTests.cpp
    korvane-runner/Bus/Linux/HeldMessagesTests.cpp
    korvane-runner/Bus/Linux/HelperStartTests.cpp
    korvane-runner/Bus/Linux/HostileProgramTests.cpp
    korvane-runner/Bus/Linux/NoMemoryTests.cpp
    korvane-runner/Bus/Linux/OutputQueueTests.cpp
    korvane-runner/Bus/Linux/PollLoopTests.cpp
    korvane-runner/Bus/Linux/ProgramPagesTests.cpp
    korvane-runner/Bus/Linux/ProxyWorld.cpp
    korvane-runner/Bus/Linux/RawClient.cpp
    korvane-runner/Bus/Linux/Receiving.cpp
    korvane-runner/Bus/Linux/ServiceFoldersTests.cpp
    korvane-runner/Bus/Linux/StartedServicesTests.cpp
    korvane-runner/Bus/Messages.cpp
    korvane-runner/Desktop/Linux/RealBus.cpp
)
target_link_libraries(BusProxyTests PRIVATE KorvaneHosts)

# The process beside the runner, with real programs on a real bus.
add_executable(korvane-test-actor korvane-runner/Bus/Linux/Actor.cpp)
target_link_libraries(korvane-test-actor PRIVATE PkgConfig::glib)
add_doctest(BusHelperTests
    korvane-runner/Bus/Messages.cpp
    korvane-runner/Bus/Linux/BusStage.cpp
    korvane-runner/Bus/Linux/FurtherStartsTests.cpp
    korvane-runner/Bus/Linux/HelpedProgramTests.cpp
    korvane-runner/Bus/Linux/HelpedServicesTests.cpp
    korvane-runner/Bus/Linux/HelpedSignalsTests.cpp
    korvane-runner/Bus/Linux/HelpedStartTests.cpp
    korvane-runner/Bus/Linux/HelperScene.cpp
    korvane-runner/Bus/Linux/HelperStaysTests.cpp
    korvane-runner/Bus/Linux/InstanceSocketTests.cpp
    korvane-runner/Bus/Linux/KilledHelperTests.cpp
    korvane-runner/Bus/Linux/WithoutHelperTests.cpp
    korvane-runner/Desktop/Linux/PrivateBus.cpp
    korvane-runner/Desktop/Linux/RealBus.cpp
    korvane-runner/Signals.cpp
)
target_link_libraries(BusHelperTests PRIVATE KorvaneHosts PkgConfig::glib)
target_compile_definitions(BusHelperTests PRIVATE
    KORVANE_TEST_ACTOR="$<TARGET_FILE:korvane-test-actor>")
add_dependencies(BusHelperTests korvane-test-actor)

# What needs the engine's libraries and no desktop.
pkg_check_modules(jsc REQUIRED IMPORTED_TARGET javascriptcoregtk-6.0)
add_doctest(PageTests
    korvane-runner/Desktop/Linux/CertificateFaultsTests.cpp
    korvane-runner/Desktop/Linux/JscValueTests.cpp
    korvane-runner/Desktop/Linux/ZoomTests.cpp
)
target_link_libraries(PageTests PRIVATE KorvaneDesktop-linked PkgConfig::glib PkgConfig::jsc)

# What the runner is linked to, and the libraries that it must do without.
pkg_check_modules(plist REQUIRED libplist-2.0)
target_compile_definitions(RunnerTests PRIVATE
    KORVANE_TEST_DESKTOP="$<TARGET_FILE:KorvaneDesktop>"
    KORVANE_TEST_ENGINE="${engineLibrary}"
    KORVANE_TEST_GIO="${gioLibrary}"
    KORVANE_TEST_LATE="$<TARGET_FILE:korvane-test-late>"
    KORVANE_TEST_LOOP="$<TARGET_FILE:korvane-test-loop>"
    KORVANE_TEST_READELF="${CMAKE_READELF}"
    KORVANE_TEST_PLIST="${plist_LINK_LIBRARIES}")

# The libraries write what the library under test reads.
pkg_check_modules(writers REQUIRED IMPORTED_TARGET
    libjpeg libopenjp2 libpng libtiff-4 libwebp libwebpmux)
target_link_libraries(IconTests PRIVATE PkgConfig::writers)

# The calls of the system that are made to fail one after another.
include(FaultInjection.cmake)
add_doctest(FaultInjectionTests
    Ambrel/Home/Linux/DesktopAccessFaultTests.cpp
    Ambrel/Home/Linux/HomesElsewhereFaultTests.cpp
    Ambrel/Platform/Linux/FileSystemFaultTests.cpp
    Manager/Operations/Linux/CreationFaultTests.cpp
    Manager/Operations/Linux/DeletionFaultTests.cpp
    Support/Faults.cpp
)
target_link_libraries(FaultInjectionTests PRIVATE Korvane::Manager)
target_link_options(FaultInjectionTests PRIVATE ${KORVANE_WRAPPED_CALLS})

# Processes that are killed in place of one call after another.
add_doctest(KillTests
    Manager/Operations/Linux/KillTests.cpp
    Support/Faults.cpp
)
target_link_libraries(KillTests PRIVATE Korvane::Manager)
target_link_options(KillTests PRIVATE ${KORVANE_WRAPPED_CALLS})
