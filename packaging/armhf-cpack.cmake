# Read by cpack for the target: dependencies are those of the target's own packages.
set(SHLIBDEPS_EXECUTABLE ${CMAKE_CURRENT_LIST_DIR}/armhf-shlibdeps)
