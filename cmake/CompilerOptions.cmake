# What every target of the project is compiled with.
add_library(project_options INTERFACE)
target_compile_options(project_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
    # A trace message or an assertion names a source file by its path inside the project.
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)

if(FREQUENCYHANDLER_SANITIZERS)
    target_compile_options(project_options INTERFACE
        -fsanitize=${FREQUENCYHANDLER_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(project_options INTERFACE -fsanitize=${FREQUENCYHANDLER_SANITIZERS})
endif()
