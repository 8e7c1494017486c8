# A room is a folder with a library. Its door is a folder of the build that holds nothing but a link to the
# room, so that `#include "base/Locks.h"` compiles only in rooms that may use `base`.
#
#   marovine_room(TARGET [USES ROOM...] [USES_INSIDE ROOM...])
#
# USES: rooms whose headers the room's own headers include; who uses the room sees them as well.
# USES_INSIDE: rooms that only the room's sources include.
# A room must be there before another uses it: the house is built from the ground up and has no circles.
function(marovine_room target)
    cmake_parse_arguments(room "" "" "USES;USES_INSIDE" ${ARGN})
    foreach(used ${room_USES} ${room_USES_INSIDE})
        if(NOT TARGET ${used})
            message(FATAL_ERROR "${target} uses ${used}, which does not stand below it")
        endif()
    endforeach()
    cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY ${CMAKE_SOURCE_DIR} OUTPUT_VARIABLE folder)
    set(door ${CMAKE_BINARY_DIR}/doors/${target})
    cmake_path(GET folder PARENT_PATH above)
    file(MAKE_DIRECTORY ${door}/${above})
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${door}/${folder} SYMBOLIC)

    # For the picture of the house: name, folder, then what its headers and what only its sources use.
    string(REPLACE ";" "," uses "${room_USES}")
    string(REPLACE ";" "," uses_inside "${room_USES_INSIDE}")
    set_property(GLOBAL APPEND_STRING PROPERTY marovine_rooms "${target} ${folder} [${uses}] [${uses_inside}]\n")

    get_target_property(type ${target} TYPE)
    if(type STREQUAL "INTERFACE_LIBRARY")
        target_include_directories(${target} INTERFACE ${door})
        target_link_libraries(${target} INTERFACE ${room_USES})
        return()
    endif()
    # What a shared library offers stands in include/marovine; its own headers stay inside.
    if(type STREQUAL "SHARED_LIBRARY")
        target_include_directories(${target} PRIVATE ${door})
    else()
        target_include_directories(${target} PUBLIC ${door})
    endif()
    target_link_libraries(${target} PUBLIC ${room_USES} PRIVATE ${room_USES_INSIDE})
endfunction()

# Writes the list of rooms, from the ground up, for `tools/draw-house`.
function(marovine_list_rooms file)
    get_property(rooms GLOBAL PROPERTY marovine_rooms)
    file(CONFIGURE OUTPUT ${file} CONTENT "${rooms}" @ONLY)
endfunction()
