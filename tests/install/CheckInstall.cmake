# Installs the build tree into a scratch prefix and checks that exactly the product lands there:
# the two programs, the tray's services module, the desktop entry and the icons, nothing else
# (no other libraries, headers or test programs), that the entry is valid, and that the
# installed programs run.
#   cmake -DBUILD_DIR=… -DSCRATCH=… -DSOURCE_DIR=… -P CheckInstall.cmake
cmake_minimum_required(VERSION 3.25)
foreach(var BUILD_DIR SCRATCH SOURCE_DIR)
    if(NOT DEFINED ${var})
        message(FATAL_ERROR "${var} is not set")
    endif()
endforeach()

set(prefix ${SCRATCH}/usr)
file(REMOVE_RECURSE ${SCRATCH})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix}
    RESULT_VARIABLE installed OUTPUT_QUIET ERROR_VARIABLE installErrors)
if(NOT installed EQUAL 0)
    message(FATAL_ERROR "cmake --install failed: ${installErrors}")
endif()

set(id com.fernhollow.quillon)
set(expected
    bin/quillon
    bin/quillon-cli
    lib/quillon/quillon-services.so
    share/applications/${id}.desktop
    share/icons/hicolor/256x256/apps/${id}.png
    share/icons/hicolor/scalable/apps/${id}.svg)
file(GLOB_RECURSE found LIST_DIRECTORIES false RELATIVE ${prefix} ${prefix}/*)
list(SORT found)
if(NOT found STREQUAL expected)
    string(REPLACE ";" "\n  " found "${found}")
    message(FATAL_ERROR "installed files differ from the product:\n  ${found}")
endif()

find_program(VALIDATE desktop-file-validate REQUIRED)
set(entry ${prefix}/share/applications/${id}.desktop)
execute_process(COMMAND ${VALIDATE} ${entry} RESULT_VARIABLE valid OUTPUT_VARIABLE report
    ERROR_VARIABLE report)
if(NOT valid EQUAL 0 OR report MATCHES "error:")
    message(FATAL_ERROR "desktop-file-validate: ${report}")
endif()
# Read whole: the values hold semicolons, which a CMake list would split.
file(READ ${entry} text)
set(text "\n${text}")
foreach(line "Name=Quillon" "Exec=quillon" "Icon=${id}" "Terminal=false" "StartupNotify=false"
        "Comment=" "Comment[fr]=")
    string(FIND "${text}" "\n${line}" at)
    if(at EQUAL -1)
        message(FATAL_ERROR "${entry} lacks the line ${line}")
    endif()
endforeach()
if(NOT text MATCHES "\nCategories=Development;Utility;\n")
    message(FATAL_ERROR "${entry} lacks the categories Development and Utility")
endif()

# The tray application names itself, and its login entry, after the same desktop file.
foreach(source src/app/main.cpp src/platform/XdgAutostart.cpp)
    file(READ ${SOURCE_DIR}/${source} text)
    if(NOT text MATCHES "\"${id}(\\.desktop)?\"")
        message(FATAL_ERROR "${source} does not use the desktop file name ${id}")
    endif()
endforeach()

foreach(program quillon quillon-cli)
    execute_process(COMMAND ${prefix}/bin/${program} --version RESULT_VARIABLE ran
        OUTPUT_VARIABLE version)
    if(NOT ran EQUAL 0 OR NOT version MATCHES "^${program} ")
        message(FATAL_ERROR "installed ${program} --version answered ${ran}: ${version}")
    endif()
endforeach()
file(REMOVE_RECURSE ${SCRATCH})
