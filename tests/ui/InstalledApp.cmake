# Checks an installed Tolvane the way a user gets it: run as
#   cmake -DSTAGE=<folder> -DVERSION=<x.y> [-DBUILD_DIR=<build tree>] -P InstalledApp.cmake
# With BUILD_DIR, the build tree is first installed into a fresh STAGE, as the Linux test does. On a Mac
# ./dev package installs and signs the bundle itself, then runs this without BUILD_DIR.
#
# The QML module Tolvane is a static plugin linked into the executable, its qmldir and views in the
# executable's resources, so the executable carries the module: what proves it is there is the installed
# app compiling every view and drawing its main window (--self-test). Where Qt was deployed beside the
# app (a qt.conf; the Mac bundle) its platform plugins and Qt Quick's QML modules must be in the tree, and
# every QML module the app loads from disk must come from inside it. On Linux the installed app uses the
# system's Qt.
cmake_minimum_required(VERSION 3.25)

function(fail)
    string(JOIN "" text ${ARGV})
    message(FATAL_ERROR "The installed app is incomplete: ${text}")
endfunction()

if(BUILD_DIR)
    file(REMOVE_RECURSE "${STAGE}")
    execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${STAGE}"
        RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT status EQUAL 0)
        fail("cmake --install ${BUILD_DIR} failed:\n${output}")
    endif()
endif()

# A Mac bundle always carries its Qt; elsewhere a qt.conf beside the executable says Qt was deployed.
if(EXISTS "${STAGE}/Tolvane.app")
    set(root "${STAGE}/Tolvane.app/Contents")
    set(executable "${root}/MacOS/Tolvane")
    set(qt_conf "${root}/Resources/qt.conf")
    set(platform_plugins "${root}/PlugIns/platforms/libqcocoa.dylib")
    set(qml "${root}/Resources/qml")
else()
    set(root "${STAGE}")
    set(executable "${root}/bin/Tolvane")
    set(qt_conf "${root}/bin/qt.conf")
    set(platform_plugins "${root}/plugins/platforms/*")
    set(qml "${root}/qml")
endif()
if(NOT EXISTS "${executable}")
    fail("there is no ${executable}")
endif()

execute_process(COMMAND "${executable}" --version
    RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT status EQUAL 0 OR NOT output STREQUAL "Tolvane ${VERSION}\n")
    fail("Tolvane --version answered \"${output}\" (status ${status}), not \"Tolvane ${VERSION}\"")
endif()

if(EXISTS "${STAGE}/Tolvane.app" OR EXISTS "${qt_conf}")
    set(deployed TRUE)
    if(NOT EXISTS "${qt_conf}")
        fail("there is no ${qt_conf} to point Qt at the bundle's plugins and QML modules")
    endif()
    file(GLOB platforms "${platform_plugins}")
    if(NOT platforms)
        fail("no platform plugin at ${platform_plugins}")
    endif()
    foreach(module QtQuick QtQuick/Controls QtQuick/Layouts)
        if(NOT EXISTS "${qml}/${module}/qmldir")
            fail("the QML module ${module} is not in ${qml}")
        endif()
    endforeach()
else()
    set(deployed FALSE)
endif()

# The self-test reads no real user's folders: HOME is an empty folder of the stage. It runs a second time
# with the import trace, which names every qmldir the app reads: ours comes from the resources.
file(MAKE_DIRECTORY "${STAGE}/home")
set(self_test "${CMAKE_COMMAND}" -E env "HOME=${STAGE}/home")
execute_process(COMMAND ${self_test} "${executable}" --self-test
    RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT status EQUAL 0)
    fail("Tolvane --self-test failed (status ${status}):\n${output}")
endif()
execute_process(COMMAND ${self_test} QML_IMPORT_TRACE=1 "${executable}" --self-test
    OUTPUT_VARIABLE output ERROR_VARIABLE output)

string(REGEX MATCHALL "importExtension:[^\n]* loaded \"?[^\"\n]*qmldir" loaded "${output}")
list(TRANSFORM loaded REPLACE "^.* loaded \"?" "")
list(REMOVE_DUPLICATES loaded)
string(JOIN "\n  " loaded_lines ${loaded})
if(NOT ":/qt/qml/Tolvane/qmldir" IN_LIST loaded)
    fail("the module Tolvane did not load from the executable's resources; it read:\n  ${loaded_lines}")
endif()
# Qt keeps some qmldir files in its libraries' resources (":/..."), which are in the tree when Qt is.
get_filename_component(inside "${qml}" REALPATH)
set(controls FALSE)
foreach(path IN LISTS loaded)
    if(path MATCHES "/QtQuick/Controls/qmldir$")
        set(controls TRUE)
    endif()
    if(deployed AND NOT path MATCHES "^:/")
        get_filename_component(real "${path}" REALPATH)
        cmake_path(IS_PREFIX inside "${real}" NORMALIZE within)
        if(NOT within)
            fail("the QML module at ${path} was loaded from outside ${qml}")
        endif()
    endif()
endforeach()
if(NOT controls)
    fail("Qt Quick Controls did not load; the app read:\n  ${loaded_lines}")
endif()
if(deployed)
    message(STATUS "${executable} ${VERSION}: every view and the main window load, with Qt from the tree")
else()
    message(STATUS "${executable} ${VERSION}: every view and the main window load, with the system's Qt")
endif()
