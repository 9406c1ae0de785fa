# The Debian packages: one for each component that something is installed for, under its name.
get_cmake_property(packages COMPONENTS)
foreach(package IN LISTS packages)
    install(FILES copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package}
        COMPONENT ${package})
    install_compressed(changelog changelog.gz ${CMAKE_INSTALL_DATADIR}/doc/${package} ${package})
    string(TOUPPER ${package} component)
    set(CPACK_DEBIAN_${component}_PACKAGE_NAME ${package})
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL ${packages})
set(CPACK_PACKAGE_NAME audiotoolboxdecoderplugin)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_SOURCE_DIR}/build/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER
    "AudioToolboxDecoderPlugin authors <maintainers@audiotoolboxdecoderplugin.example.org>")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_ATDP_PACKAGE_SECTION sound)
set(CPACK_COMPONENT_ATDP_DESCRIPTION
"decode, convert, play and examine sound files
A decoder plug-in for audio players, and a command-line player and converter
over it. It decodes linear PCM in WAV, AIFF, CAF, AU and Wave64 files, MPEG
audio of layers I to III and Apple Lossless, gaplessly, with exact lengths and
exact seeks.")

# What depends on the library, and what the system is to do when it comes or goes.
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/shlibs "libatdp 0 libatdp0 (>= ${PROJECT_VERSION})\n")
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBATDP0_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_BINARY_DIR}/shlibs ${CMAKE_CURRENT_BINARY_DIR}/triggers)
install(FILES libatdp0.lintian RENAME libatdp0
    DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides COMPONENT libatdp0)
set(CPACK_DEBIAN_LIBATDP0_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_LIBATDP0_DESCRIPTION
"decoders of PCM, MPEG audio and Apple Lossless files
The decoders of AudioToolboxDecoderPlugin as a library for programs in C and
in languages that call C.")

set(CPACK_DEBIAN_LIBATDP-DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_LIBATDP-DEV_PACKAGE_DEPENDS
    "libatdp0 (= ${PROJECT_VERSION}), atdp (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_LIBATDP-DEV_DESCRIPTION
"decoders of PCM, MPEG audio and Apple Lossless files (development files)
What is needed to build programs with the decoders of
AudioToolboxDecoderPlugin: the header of the C library, and headers in C++ for
players that load the decoder module.")

# Only where the player's headers were there when it was built.
set(CPACK_DEBIAN_AUDACIOUS-PLUGIN-ATDP_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_AUDACIOUS-PLUGIN-ATDP_PACKAGE_DEPENDS "atdp (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_AUDACIOUS-PLUGIN-ATDP_PACKAGE_RECOMMENDS audacious)
set(CPACK_COMPONENT_AUDACIOUS-PLUGIN-ATDP_DESCRIPTION
"decoders of PCM, MPEG audio and Apple Lossless files (for Audacious)
Lets the player Audacious decode sound files with AudioToolboxDecoderPlugin:
gaplessly, with exact lengths and exact seeks.")
include(CPack)
