# What the library is made of on Linux: the backend of its seams and the libraries behind them.

target_sources(Ambrel PRIVATE
    Platform/Linux/BoldSansFont.cpp
    Platform/Linux/DataFolders.cpp
    Platform/Linux/ErrorReason.cpp
    Platform/Linux/ExclusiveRename.cpp
    Platform/Linux/ExtendedAttributes.cpp
    Platform/Linux/FileWatch.cpp
    Platform/Linux/HomeVariables.cpp
    Platform/Linux/Images.cpp
    Platform/Linux/ItemTimes.cpp
    Platform/Linux/Jpeg2000Decoder.cpp
    Platform/Linux/LazyLibrary.cpp
    Platform/Linux/MainBundle.cpp
    Platform/Linux/NewPipe.cpp
    Platform/Linux/PixbufDecoder.cpp
    Platform/Linux/PngDecoder.cpp
    Platform/Linux/PngEncoder.cpp
    Platform/Linux/ProcessEnd.cpp
    Platform/Linux/ProcessFiles.cpp
    Platform/Linux/ProcessName.cpp
    Platform/Linux/Processes.cpp
    Platform/Linux/PropertyList.cpp
    Platform/Linux/PropertyListScreen.cpp
    Platform/Linux/Rasterizer.cpp
    Platform/Linux/SessionLinks.cpp
    Platform/Linux/SignalWait.cpp
    Platform/Linux/Spawn.cpp
    Platform/Linux/StartTokens.cpp
    Platform/Linux/Text.cpp
    Platform/Linux/TiffDecoder.cpp
    Platform/Linux/UserBaseFolders.cpp
    Platform/Linux/UserFolderSettings.cpp
    Platform/Linux/WebPDecoder.cpp
)

find_package(ICU 72 REQUIRED COMPONENTS i18n uc)
target_link_libraries(Ambrel PUBLIC ICU::i18n ICU::uc ${CMAKE_DL_LIBS})

# For whoever uses the installed library: the same, as install_library() hands it on.
set(AMBREL_DEPENDENCIES "find_dependency(ICU ${ICU_VERSION_MAJOR} COMPONENTS i18n uc)")
set(AMBREL_PC_REQUIRES "icu-i18n icu-uc")
set(AMBREL_PC_LIBS "-l${CMAKE_DL_LIBS}")

find_package(PkgConfig REQUIRED)
include(LazyLibrary)
pkg_check_modules(plist REQUIRED IMPORTED_TARGET libplist-2.0)
# Opened when first used, so that the runner works, and starts fast, without it.
add_lazy_library(Ambrel NAME Plist LIBRARY "${plist_LINK_LIBRARIES}"
    INCLUDE_DIRECTORIES ${plist_INCLUDE_DIRS}
    FUNCTIONS
        plist_array_append_item plist_array_get_item plist_array_get_size
        plist_dict_new_iter plist_dict_next_item plist_dict_set_item
        plist_free plist_from_bin plist_from_xml plist_get_bool_val plist_get_node_type
        plist_get_real_val plist_get_string_val plist_get_uint_val plist_to_xml_free
        plist_new_array plist_new_bool plist_new_dict plist_new_real plist_new_string
        plist_new_uint plist_to_xml)
include(ImageLibraries)
