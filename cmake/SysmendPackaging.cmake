# How the application is installed and how the desktop knows it.
#
# Linux and other Unix systems (install prefix P):
#   P/bin/sysmend, P/bin/sysmend-cli
#   P/share/sysmend/.cx                          the signature database (resources/CMakeLists.txt)
#   P/share/applications/net.qvarlo.Sysmend.desktop
#   P/share/metainfo/net.qvarlo.Sysmend.metainfo.xml
#   P/share/icons/hicolor/{128x128,256x256,512x512}/apps/net.qvarlo.Sysmend.png
#   P/share/icons/hicolor/scalable/apps/net.qvarlo.Sysmend.svg
# The folders are fixed rather than taken from GNUInstallDirs: the signature loader looks for
# the database at <the executable's folder>/../share/sysmend, so bin/ and share/ must be
# siblings.
#
# macOS: the application is the bundle Sysmend.app, built with its Info.plist, icon and
# signature database (Contents/Resources, where the loader looks first) and installed as
# P/Sysmend.app with sysmend-cli beside the main executable in Contents/MacOS, so that the CLI
# finds the same database. Qt's frameworks are copied into the bundle at install time.

set(SYSMEND_APP_ID "net.qvarlo.Sysmend")

# The oldest macOS the bundle claims to run on: the deployment target when one is set, else the
# system it is built on (Homebrew's Qt is built for that system and no older one).
function(sysmend_macos_minimum out)
    if(CMAKE_OSX_DEPLOYMENT_TARGET)
        set(minimum "${CMAKE_OSX_DEPLOYMENT_TARGET}")
    else()
        execute_process(COMMAND sw_vers -productVersion
            OUTPUT_VARIABLE host OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
        string(REGEX MATCH "^[0-9]+" major "${host}")
        if(major)
            set(minimum "${major}.0")
        else()
            set(minimum "11.0")  # the oldest any Qt 6.5 or later runs on
        endif()
    endif()
    set(${out} "${minimum}" PARENT_SCOPE)
endfunction()

# Makes `target` the application (a bundle on macOS) and installs it with the CLI target `cli`
# and the desktop integration. Call it from the directory that defines `target`.
function(sysmend_package_app target cli)
    set(resources "${PROJECT_SOURCE_DIR}/resources")
    if(NOT APPLE)
        install(TARGETS ${target} RUNTIME DESTINATION bin)
        install(FILES "${resources}/linux/${SYSMEND_APP_ID}.desktop"
            DESTINATION share/applications)
        install(FILES "${resources}/linux/${SYSMEND_APP_ID}.metainfo.xml"
            DESTINATION share/metainfo)
        foreach(size IN ITEMS 128 256 512)
            install(FILES "${resources}/icons/sysmend-${size}.png"
                DESTINATION share/icons/hicolor/${size}x${size}/apps
                RENAME ${SYSMEND_APP_ID}.png)
        endforeach()
        install(FILES "${resources}/icons/sysmend.svg"
            DESTINATION share/icons/hicolor/scalable/apps
            RENAME ${SYSMEND_APP_ID}.svg)
        return()
    endif()

    # Files listed as sources with a package location are copied into the bundle whenever they
    # change; the database is made by the signature_database target in resources/.
    set(icon "${resources}/macos/Sysmend.icns")
    target_sources(${target} PRIVATE "${icon}" "${SYSMEND_SIGNATURE_FILE}")
    set_source_files_properties("${icon}" "${SYSMEND_SIGNATURE_FILE}"
        PROPERTIES MACOSX_PACKAGE_LOCATION Resources)
    add_dependencies(${target} signature_database)

    sysmend_macos_minimum(minimum)
    # Info.plist.in is filled in at generate time from these properties and from the variables
    # of this directory, hence PARENT_SCOPE.
    set(SYSMEND_MACOS_MINIMUM "${minimum}" PARENT_SCOPE)
    set_target_properties(${target} PROPERTIES
        MACOSX_BUNDLE TRUE
        OUTPUT_NAME Sysmend
        MACOSX_BUNDLE_INFO_PLIST "${resources}/macos/Info.plist.in"
        MACOSX_BUNDLE_BUNDLE_NAME Sysmend
        MACOSX_BUNDLE_GUI_IDENTIFIER ${SYSMEND_APP_ID}
        MACOSX_BUNDLE_ICON_FILE Sysmend.icns
        MACOSX_BUNDLE_BUNDLE_VERSION ${PROJECT_VERSION}
        MACOSX_BUNDLE_SHORT_VERSION_STRING ${PROJECT_VERSION}
        MACOSX_BUNDLE_COPYRIGHT "Free software under the GNU GPL, version 3 or later")

    install(TARGETS ${target} BUNDLE DESTINATION .)
    install(TARGETS ${cli} RUNTIME DESTINATION Sysmend.app/Contents/MacOS)
    # The bundle must be at the top of the prefix for Qt's deployment script.
    if(Qt6_VERSION VERSION_GREATER_EQUAL 6.5)
        qt_generate_deploy_app_script(TARGET ${target} OUTPUT_SCRIPT deploy)
    else()
        qt_generate_deploy_app_script(TARGET ${target} FILENAME_VARIABLE deploy)
    endif()
    install(SCRIPT "${deploy}")
endfunction()
