# cmake -DFILE=FrequencyHandlerConfigVersion.cmake -P versions.cmake
#
# Which versions that are asked for are served by the installed 0.2: until 1.0 a minor version serves itself alone.
function(expect version expected)
    string(REPLACE "." ";" parts ${version})
    list(GET parts 0 PACKAGE_FIND_VERSION_MAJOR)
    list(GET parts 1 PACKAGE_FIND_VERSION_MINOR)
    list(LENGTH parts PACKAGE_FIND_VERSION_COUNT)
    set(PACKAGE_FIND_VERSION ${version})
    include(${FILE})
    if(NOT PACKAGE_VERSION_COMPATIBLE STREQUAL expected)
        message(SEND_ERROR "asked for ${version}: ${PACKAGE_VERSION_COMPATIBLE}, expected ${expected}")
    endif()
endfunction()

expect(0.2 TRUE)
expect(0.2.0 TRUE)
expect(0.1 FALSE)
expect(0.3 FALSE)
expect(1.0 FALSE)
