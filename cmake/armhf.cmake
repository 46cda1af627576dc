# 32-bit ARM Linux with a floating-point unit: the processor of the radio. Programs run here under qemu-arm.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)

# Headers and libraries of C and C++ come with the compiler; everything else, which the library and its platforms do without,
# is fetched by cmake/armhf-sysroot.
cmake_path(GET CMAKE_CURRENT_LIST_DIR PARENT_PATH armhf_project)
set(armhf_root ${armhf_project}/build/armhf-sysroot/root)
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES FREQUENCYHANDLER_RADIOCTL FREQUENCYHANDLER_TESTS)
set(armhf_wants_more ON)
if(DEFINED FREQUENCYHANDLER_RADIOCTL AND DEFINED FREQUENCYHANDLER_TESTS AND NOT FREQUENCYHANDLER_RADIOCTL AND NOT FREQUENCYHANDLER_TESTS)
    set(armhf_wants_more OFF)
endif()
if(armhf_wants_more AND NOT EXISTS ${armhf_root})
    message(FATAL_ERROR "Run first:  cmake/armhf-sysroot build/armhf-sysroot\n"
        "or build the library alone:  cmake --preset armhf-library")
endif()
set(CMAKE_FIND_ROOT_PATH ${armhf_root})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${armhf_root})
set(ENV{PKG_CONFIG_LIBDIR} ${armhf_root}/usr/lib/arm-linux-gnueabihf/pkgconfig:${armhf_root}/usr/share/pkgconfig)

set(armhf_libraries ${armhf_root}/usr/lib/arm-linux-gnueabihf ${armhf_root}/lib/arm-linux-gnueabihf)
list(JOIN armhf_libraries ":" armhf_library_path)
set(CMAKE_EXE_LINKER_FLAGS_INIT -Wl,-rpath-link,${armhf_library_path})

# What runs here runs with the target's own libraries; those of the sanitizers come with the compiler. Leaks are looked
# for on the host alone: the leak detector stops and inspects threads, which an emulator does not offer. It reads its
# options from the environment of the emulator, not from that which the emulator gives to the program.
find_program(QEMU_ARM qemu-arm)
if(armhf_wants_more AND NOT QEMU_ARM)
    message(FATAL_ERROR "qemu-arm is missing: Debian's package qemu-user")
endif()
set(CMAKE_CROSSCOMPILING_EMULATOR /usr/bin/env ASAN_OPTIONS=detect_leaks=0
    ${QEMU_ARM} -L ${armhf_root} -E LD_LIBRARY_PATH=${armhf_library_path}:/usr/arm-linux-gnueabihf/lib)
