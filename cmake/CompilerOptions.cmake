# What every target of the project is compiled with.
add_library(project_options INTERFACE)
target_compile_options(project_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    # A trace message or an assertion names a source file by its path inside the project.
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
# What is built here fits together, and some of it is there before the library.
target_compile_definitions(project_options INTERFACE FREQUENCYHANDLER_WITHOUT_HANDSHAKE)
# What a compiler to come warns of is for those who change the project, not for those who only build it.
option(FREQUENCYHANDLER_WERROR "Have a warning of the compiler end the build" ${FREQUENCYHANDLER_TESTS})
if(FREQUENCYHANDLER_WERROR)
    target_compile_options(project_options INTERFACE -Werror)
endif()

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_SYSTEM_PROCESSOR STREQUAL "arm")
    # How a compiler of years ago passed some arguments is nobody's concern here.
    target_compile_options(project_options INTERFACE -Wno-psabi)
endif()

# Where the C library's own times and offsets have 32 bits, those of platforms and programs have 64: files over 2 GiB, dates
# after 2038, and files whose number needs more than 32 bits. The library has none of them, and its interface and its size
# are recorded: a target can say KEEPS_C_TYPES of itself.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    target_compile_definitions(project_options INTERFACE
        "$<$<NOT:$<BOOL:$<TARGET_PROPERTY:KEEPS_C_TYPES>>>:_FILE_OFFSET_BITS=64;_TIME_BITS=64>")
endif()

if(FREQUENCYHANDLER_SANITIZERS)
    set(sanitize -fsanitize=${FREQUENCYHANDLER_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    if(CMAKE_SYSTEM_PROCESSOR STREQUAL "arm")
        # The address of a Thumb function is odd, which the check of alignments takes for a fault.
        list(APPEND sanitize -marm)
    endif()
    # A target can say NOT_SANITIZED of itself: it then only links with those that are.
    target_compile_options(project_options INTERFACE "$<$<NOT:$<BOOL:$<TARGET_PROPERTY:NOT_SANITIZED>>>:${sanitize}>")
    target_link_options(project_options INTERFACE -fsanitize=${FREQUENCYHANDLER_SANITIZERS})
endif()

if(FREQUENCYHANDLER_FUZZ)
    # A fuzzer sees which edges an input takes, also those in the parser of board files. A target can say
    # UNSEEN_BY_FUZZER of itself.
    target_compile_options(project_options INTERFACE
        "$<$<NOT:$<BOOL:$<TARGET_PROPERTY:UNSEEN_BY_FUZZER>>>:-fsanitize=fuzzer-no-link>")
    target_link_options(project_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
