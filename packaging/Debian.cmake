# cpack, run in a build directory, makes a package to run and one to develop with; of a cross build for its target.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME frequencyhandler)
set(CPACK_PACKAGE_CONTACT "The FrequencyHandler maintainers <frequencyhandler@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "frequency service of a microwave radio unit")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
# What is stripped goes into packages of its own, frequencyhandler-dbgsym and python3-frequencyhandler-dbgsym.
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
set(CPACK_BUILD_SOURCE_DIRS ${PROJECT_SOURCE_DIR})
set(CPACK_COMPONENTS_ALL runtime development)
if(FREQUENCYHANDLER_HAS_PYTHON)
    list(APPEND CPACK_COMPONENTS_ALL python)
endif()
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
if(CMAKE_CROSSCOMPILING AND CMAKE_LIBRARY_ARCHITECTURE STREQUAL "arm-linux-gnueabihf") # else it is this computer's
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)
    set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_LIST_DIR}/armhf-cpack.cmake)
endif()

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME frequencyhandler)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION comm)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "The library that tunes the transmitters and receivers of a radio unit inside
its platform process, a platform for a PC or a bare board, devices behind its
drivers, and radioctl, which boots a described radio and drives it.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SUGGESTS gnuplot-nox)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME frequencyhandler-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "Headers of the frequency service and of the contracts with its platform, and
what CMake and pkg-config need to find them.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "frequencyhandler (= ${PROJECT_VERSION})")

# For the Python that it was built for: an extension module is for one version.
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-frequencyhandler)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_DESCRIPTION "The frequency service for Python
Radio units described, booted, driven, audited and calibrated from Python, with
arrays of numpy, and fixtures for acceptance tests by pytest.")
math(EXPR next_minor "${Python_VERSION_MINOR} + 1")
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "frequencyhandler (= ${PROJECT_VERSION}), python3-numpy, python3 (>= ${Python_VERSION_MAJOR}.${Python_VERSION_MINOR}~), python3 (<< ${Python_VERSION_MAJOR}.${next_minor})")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-pytest, python3-tqdm, python3-matplotlib")
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA "${CMAKE_CURRENT_LIST_DIR}/python/postinst;${CMAKE_CURRENT_LIST_DIR}/python/prerm")
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_STRICT_PERMISSION ON)

include(CPack)
