# How every target of this project is made: language level, warnings as errors, include directories.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

option(TARNWICK_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)

add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
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
    set_target_properties(${name} PROPERTIES AUTOMOC ON AUTORCC ON)
    target_link_libraries(${name} PUBLIC Qt6::Widgets)
  endif()
endfunction()

# tarnwick_test(NAME SOURCES ... [LINKS ...])
# A GoogleTest program that is one CTest test. Windows are tested on Qt's offscreen platform.
function(tarnwick_test name)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "TIMEOUT" "SOURCES;LINKS")
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LINKS} GTest::gmock)
  add_test(NAME ${name} COMMAND ${name})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 600)
  endif()
  set_tests_properties(${name} PROPERTIES
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;TZ=UTC" TIMEOUT ${ARG_TIMEOUT})
endfunction()
