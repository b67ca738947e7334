# Headers that nearly every file reads, compiled once: half of the work of a build without optimisation is reading
# them. A header of ours never stands there, so that no edit makes everything new.
#
# ts5_precompiled(TARGET KIND): libraries without windows (LOGIC), with windows (WINDOWS), tests (TESTS) and tests of
# windows (WINDOW_TESTS). A library without sources of its own makes the header for all targets of a kind.
option(TS5_PRECOMPILE "Compile the headers of the libraries once" ON)

set(TS5_HEADERS_LOGIC
  <algorithm> <array> <atomic> <chrono> <cmath> <cstdint> <functional> <map> <memory> <mutex> <optional> <ranges> <set>
  <span> <string> <string_view> <thread> <utility> <vector> <tl/expected.hpp>)
set(TS5_HEADERS_WINDOWS <QtWidgets> ${TS5_HEADERS_LOGIC})
set(TS5_HEADERS_TESTS <gmock/gmock.h> <gtest/gtest.h> ${TS5_HEADERS_LOGIC})
set(TS5_HEADERS_WINDOW_TESTS <QtWidgets> <QtTest> ${TS5_HEADERS_TESTS})
set(TS5_LIBRARIES_LOGIC ts5_settings tl::expected)
set(TS5_LIBRARIES_WINDOWS ${TS5_LIBRARIES_LOGIC} Qt6::Widgets)
set(TS5_LIBRARIES_TESTS ${TS5_LIBRARIES_LOGIC} GTest::gmock)
set(TS5_LIBRARIES_WINDOW_TESTS ${TS5_LIBRARIES_TESTS} Qt6::Widgets Qt6::Test)

function(ts5_precompiled target kind)
  if(NOT TS5_PRECOMPILE)
    return()
  endif()
  string(TOLOWER ts5_precompiled_${kind} maker)
  if(NOT TARGET ${maker})
    file(WRITE ${CMAKE_BINARY_DIR}/precompiled.cpp "")
    add_library(${maker} OBJECT ${CMAKE_BINARY_DIR}/precompiled.cpp)
    target_link_libraries(${maker} PRIVATE ${TS5_LIBRARIES_${kind}})
    target_precompile_headers(${maker} PRIVATE ${TS5_HEADERS_${kind}})
  endif()
  target_precompile_headers(${target} REUSE_FROM ${maker})
endfunction()
