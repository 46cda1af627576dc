# What a distribution compiles programs with is what they are built with here, too: the stack protected, functions of the C
# library that look at sizes, programs anywhere in memory, relocations read-only and bound at once. Where such flags are given
# from outside, as by a build of packages, they are taken from there; instrumented code has checks of its own.
option(FREQUENCYHANDLER_HARDENING "Harden programs and platforms as distributions do" ON)
set(hardening_flags)
set(hardening_link_flags)
if(FREQUENCYHANDLER_HARDENING AND NOT FREQUENCYHANDLER_SANITIZERS AND NOT FREQUENCYHANDLER_FUZZ AND NOT FREQUENCYHANDLER_COVERAGE
    AND NOT "${CMAKE_C_FLAGS} ${CMAKE_CXX_FLAGS}" MATCHES "-fstack-protector|_FORTIFY_SOURCE")
    include(CheckCXXCompilerFlag)
    include(CheckLinkerFlag)
    include(CheckPIESupported)
    foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection)
        string(MAKE_C_IDENTIFIER "FREQUENCYHANDLER_HAS${flag}" has)
        check_cxx_compiler_flag("-Werror ${flag}" ${has})
        if(${has})
            list(APPEND hardening_flags ${flag})
        endif()
    endforeach()
    # Where nothing is optimised no sizes are known, which the C library warns of.
    if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug" AND NOT FREQUENCYHANDLER_ROOM_OPTIONS MATCHES "-O0")
        list(APPEND hardening_flags -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
    endif()
    foreach(flag -Wl,-z,relro -Wl,-z,now)
        string(MAKE_C_IDENTIFIER "FREQUENCYHANDLER_HAS${flag}" has)
        check_linker_flag(CXX ${flag} ${has})
        if(${has})
            list(APPEND hardening_link_flags ${flag})
        endif()
    endforeach()
    check_pie_supported()
endif()

# harden(TARGET...): programs, platforms and what they are made of. The library is not among them: its flags are for those who
# build it for a radio, within its budgets.
function(harden)
    foreach(target IN LISTS ARGN)
        get_target_property(type ${target} TYPE)
        target_compile_options(${target} PRIVATE ${hardening_flags})
        if(hardening_link_flags AND type STREQUAL "EXECUTABLE")
            set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
        endif()
        if(NOT type STREQUAL "STATIC_LIBRARY")
            target_link_options(${target} PRIVATE ${hardening_link_flags})
        endif()
    endforeach()
endfunction()

# harden_uncounted(TARGET): a shared library whose instructions tests and benchmarks hold to a budget. Where those are built it
# is compiled as the budget has it, without what protects the stack of each call; elsewhere it is hardened whole.
function(harden_uncounted target)
    if(FREQUENCYHANDLER_TESTS OR FREQUENCYHANDLER_BENCHMARKS)
        target_link_options(${target} PRIVATE ${hardening_link_flags})
    else()
        harden(${target})
    endif()
endfunction()
