# Compiler settings of the whole project.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

find_program(TS5_CCACHE ccache)
if(TS5_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${TS5_CCACHE})
endif()

# The faster linker where it is there; both compilers take it.
find_program(TS5_LLD ld.lld)
if(TS5_LLD)
  add_link_options(-fuse-ld=lld)
endif()

# What every target of our own is compiled with; third-party headers come in as system headers.
add_library(ts5_settings INTERFACE)
target_compile_options(ts5_settings INTERFACE -Wall -Wextra -Wconversion -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 sees overlaps in std::string's operator+ (GCC bug 105651) and overflows in std::vector::insert (bug
  # 100366) that cannot be.
  target_compile_options(ts5_settings INTERFACE -Wno-restrict -Wno-stringop-overflow)
  # With full optimisation it also takes the unused half of an empty std::optional or tl::expected for a value that
  # is read (bug 80635). The builds without it, Clang and the sanitizers still tell what is really uninitialised.
  target_compile_options(ts5_settings INTERFACE $<$<CONFIG:Release>:-Wno-maybe-uninitialized>)
  # There it also sees accesses outside of arrays whose size it has only guessed (bugs 105329, 107852).
  # So it does where every access is watched by the thread sanitizer.
  target_compile_options(ts5_settings INTERFACE $<$<CONFIG:Release>:-Wno-stringop-overread>)
  if(CMAKE_BUILD_TYPE STREQUAL "Release" OR TS5_SANITIZE STREQUAL "thread")
    target_compile_options(ts5_settings INTERFACE -Wno-array-bounds)
  endif()
endif()
target_include_directories(ts5_settings INTERFACE ${CMAKE_SOURCE_DIR}/src)

if(TS5_SANITIZE)
  add_compile_options(-fsanitize=${TS5_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TS5_SANITIZE})
endif()
if(TS5_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
