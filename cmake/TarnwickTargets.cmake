# How every target of this project is made: language level, warnings, include directories.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

option(TARNWICK_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)

# What warns is an error where we build it (the presets), and never where a newer compiler finds something.
add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(TARNWICK_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

option(TARNWICK_FUZZ "Build the fuzz targets, for which all is built by clang with its fuzzer" OFF)
if(TARNWICK_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all)
  add_link_options(-fsanitize=address,undefined)
endif()

# The portable folder: what a user owns and starts from.
set(TARNWICK_PORTABLE ${CMAKE_BINARY_DIR}/portable)

# tarnwick_library(NAME SOURCES ... [LINKS ...] [QT])
# A static library whose public headers lie in include/ beside the calling CMakeLists.txt.
# LINKS are the libraries whose headers it may include; nothing else is in reach.
function(tarnwick_library name)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "QT" "" "SOURCES;LINKS")
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/include)
  target_link_libraries(${name} PUBLIC ${ARG_LINKS})
  if(ARG_QT)
    target_link_libraries(${name} PUBLIC Qt6::Widgets)
    tarnwick_reads(${name} headers_qt)
  else()
    tarnwick_reads(${name} headers_plain)
  endif()
endfunction()

# A test program runs for seconds, and is compiled more often than it runs.
set(TARNWICK_TEST_OPTIONS -O0)

# tarnwick_test(NAME SOURCES ... [LINKS ...] [QT])
# A GoogleTest program that is one CTest test. Windows are tested on Qt's offscreen platform.
function(tarnwick_test name)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "QT" "TIMEOUT" "SOURCES;LINKS")
  add_executable(${name} ${ARG_SOURCES})
  target_compile_options(${name} PRIVATE ${TARNWICK_TEST_OPTIONS})
  if(ARG_QT)
    tarnwick_reads(${name} headers_tests_qt)
  else()
    tarnwick_reads(${name} headers_tests)
  endif()
  target_link_libraries(${name} PRIVATE ${ARG_LINKS} GTest::gmock)
  add_test(NAME ${name} COMMAND ${name})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 600)
  endif()
  set_tests_properties(${name} PROPERTIES
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;TZ=UTC" TIMEOUT ${ARG_TIMEOUT})
endfunction()
