# Build rules shared by every folder: compiler settings, output folders and the
# functions that declare a folder's library, its programs and its tests.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN/../lib/serviceOrchAG:$ORIGIN")

option(ZAN_BUILD_BENCH "Build the benchmarks" ON)
option(ZAN_COVERAGE "Instrument for gcov" OFF)
set(ZAN_SANITIZE "" CACHE STRING "Sanitizers to build with, e.g. address,undefined or thread")
option(ZAN_FUZZ "Build the libFuzzer programs; wants clang" OFF)
set(ZAN_PUGIXML_SOURCE "" CACHE PATH "Unpacked source of pugixml, to build it with our options")

find_program(ZAN_CCACHE ccache)
if(ZAN_CCACHE)
  # Relative paths in the hash, so that every checkout shares the cache.
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR}
      CCACHE_NOHASHDIR=1 ${ZAN_CCACHE})
endif()

find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(ZMQ REQUIRED IMPORTED_TARGET libzmq)
if(NOT ZAN_PUGIXML_SOURCE)
  find_package(pugixml REQUIRED)
endif()
find_package(spdlog REQUIRED)
find_package(SQLite3 REQUIRED)
find_package(GTest REQUIRED)

add_library(zan_options INTERFACE)
target_include_directories(zan_options INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(zan_options INTERFACE
  -Wall -Wextra -Wconversion -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Werror
  # Paths of the build machine stay out of the binaries, and ccache hits in every checkout.
  -ffile-prefix-map=${CMAKE_SOURCE_DIR}=.)
target_link_libraries(zan_options INTERFACE Threads::Threads)

if(ZAN_SANITIZE)
  target_compile_options(zan_options INTERFACE
    -fsanitize=${ZAN_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all
    # g++ mistakes instrumented code of the standard library for a use before initialisation.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  target_link_options(zan_options INTERFACE -fsanitize=${ZAN_SANITIZE})
endif()
if(ZAN_COVERAGE)
  target_compile_options(zan_options INTERFACE --coverage)
  target_link_options(zan_options INTERFACE --coverage)
endif()

include(ZanFuzz)

# zan_folder(NAME SOURCES ... [DEPENDS ...] [PRIVATE_DEPENDS ...])
# One folder's library: an object library, so that shared libraries and tests take its objects
# once and by name. DEPENDS pass on include paths and options, never objects.
function(zan_folder name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
  add_library(${name} OBJECT ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC zan_options ${ARG_DEPENDS} PRIVATE ${ARG_PRIVATE_DEPENDS})
endfunction()

# zan_test(NAME SOURCES ... [DEPENDS ...] [LABELS ...])
# One GoogleTest program and its CTest entry. DEPENDS names the object libraries under test
# and the shared libraries that they stand on. The label "concurrent" puts it in the
# ThreadSanitizer run, whose build makes the target concurrent_tests only.
add_custom_target(concurrent_tests)
function(zan_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE zan_options ${ARG_DEPENDS} GTest::gmock GTest::gtest
    GTest::gmock_main)
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 120 LABELS "${ARG_LABELS}")
  if("concurrent" IN_LIST ARG_LABELS)
    add_dependencies(concurrent_tests ${name})
  endif()
endfunction()

# The system's own Python: another one may stand first on PATH and lack the packaged modules.
find_program(ZAN_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)

# zan_python_test(NAME FILE [LABELS ...])
# One file of Python unit tests as a CTest entry.
function(zan_python_test name file)
  cmake_parse_arguments(ARG "" "" "LABELS" ${ARGN})
  add_test(NAME ${name} COMMAND ${ZAN_PYTHON} -B ${CMAKE_CURRENT_SOURCE_DIR}/${file})
  set_tests_properties(${name} PROPERTIES TIMEOUT 120 LABELS "${ARG_LABELS}")
endfunction()
