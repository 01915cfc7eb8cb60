# The headers of the standard library, the toolkit and the test framework, read once and not anew by each
# file. A file still includes what it uses: the preset "sanitize" builds without this.

# Executables and libraries share the precompiled headers, so they are compiled alike.
add_compile_options(-fPIC)

# tarnwick_headers(NAME HEADERS ... [LINKS ...]): a set of headers that targets read together.
function(tarnwick_headers name)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "HEADERS;LINKS")
  add_library(${name} OBJECT ${CMAKE_SOURCE_DIR}/cmake/empty.cpp)
  target_link_libraries(${name} PRIVATE ${ARG_LINKS})
  target_precompile_headers(${name} PRIVATE ${ARG_HEADERS})
endfunction()

# tarnwick_reads(TARGET NAME): the target's files begin with that set.
function(tarnwick_reads target name)
  target_precompile_headers(${target} REUSE_FROM ${name})
endfunction()

set(standard_headers <algorithm> <array> <chrono> <cstdint> <filesystem> <functional> <map> <memory> <optional>
    <span> <string> <string_view> <system_error> <utility> <vector>)
set(window_headers <QApplication> <QComboBox> <QGridLayout> <QKeyEvent> <QLabel> <QListWidget> <QMessageBox> <QPainter>
    <QPlainTextEdit> <QPushButton> <QTableView> <QTimer>)
tarnwick_headers(headers_plain HEADERS ${standard_headers})
if(TARNWICK_WINDOW)
  tarnwick_headers(headers_qt HEADERS ${standard_headers} ${window_headers} LINKS Qt6::Widgets)
endif()
if(BUILD_TESTING)
  tarnwick_headers(headers_tests HEADERS ${standard_headers} <gmock/gmock.h> <fstream> LINKS GTest::gmock)
  target_compile_options(headers_tests PRIVATE ${TARNWICK_TEST_OPTIONS})
endif()
if(BUILD_TESTING AND TARNWICK_WINDOW)
  tarnwick_headers(headers_tests_qt HEADERS ${standard_headers} <gmock/gmock.h> <fstream> ${window_headers}
                   LINKS GTest::gmock Qt6::Widgets)
  target_compile_options(headers_tests_qt PRIVATE ${TARNWICK_TEST_OPTIONS})
endif()
