# What the conformance rules are linked with.
include(CMakeFindDependencyMacro)
find_dependency(Threads)
include(${CMAKE_CURRENT_LIST_DIR}/FrequencyHandlerTargets.cmake)
