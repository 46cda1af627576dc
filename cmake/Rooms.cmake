# add_door(TARGET FOLDER NAME): makes a folder in which NAME leads to FOLDER, and which has nothing else in it. Whoever links
# TARGET is given it to look for headers.
function(add_door target folder name)
    set(door ${PROJECT_BINARY_DIR}/rooms/${target})
    cmake_path(GET name PARENT_PATH parent)
    file(MAKE_DIRECTORY ${door}/${parent})
    if(NOT EXISTS ${door}/${name})
        file(CREATE_LINK ${folder} ${door}/${name} SYMBOLIC)
    endif()
endfunction()

# add_room(TARGET SOURCES source... [KNOWS target...] [USES library...])
#
# A room of the house: the folder in which this is called, as a target that sees the headers of the rooms that it KNOWS,
# and of no others. Its own headers are included as they are found from the top of the project, "radio/board/Board.h";
# so that nobody finds those of the rooms beside it, who links the room is given a door to it alone.
#
# USES are libraries of others. Their headers are for the sources of the room alone.
function(add_room target)
    cmake_parse_arguments(PARSE_ARGV 1 room "" "" "SOURCES;KNOWS;USES")
    cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY ${PROJECT_SOURCE_DIR} OUTPUT_VARIABLE folder)
    add_door(${target} ${CMAKE_CURRENT_SOURCE_DIR} ${folder})
    add_library(${target} STATIC ${room_SOURCES})
    target_include_directories(${target} PUBLIC ${PROJECT_BINARY_DIR}/rooms/${target})
    target_link_libraries(${target} PUBLIC ${room_KNOWS} PRIVATE project_options ${room_USES})
    # Headers are what takes a compiler's time: they are read once for all sources of a room.
    set_target_properties(${target} PROPERTIES UNITY_BUILD ${FREQUENCYHANDLER_UNITY} UNITY_BUILD_BATCH_SIZE 0)
    target_compile_options(${target} PRIVATE ${FREQUENCYHANDLER_ROOM_OPTIONS})
    harden(${target})
    if(FREQUENCYHANDLER_HAS_PYTHON)
        # A part of a shared module, too; calls inside the room stay direct there.
        set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
        target_compile_options(${target} PRIVATE -fno-semantic-interposition)
    endif()
    set_property(GLOBAL APPEND PROPERTY FREQUENCYHANDLER_ROOMS ${target})
    set_target_properties(${target} PROPERTIES ROOM_FOLDER ${folder})
endfunction()
