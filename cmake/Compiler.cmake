# One interface target that every target of the house links: warnings, sanitizers, ccache.
add_library(tambrel_compiler INTERFACE)
target_compile_options(tambrel_compiler INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
  -Woverloaded-virtual -Wold-style-cast -Wimplicit-fallthrough)
# GCC 12 finds overlaps where a string is added to a literal, when it optimizes (its bug 105651, mended in 13).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(tambrel_compiler INTERFACE $<$<CONFIG:Release>:-Wno-restrict>)
endif()
# A library that is not used would still have to be loaded at every start.
target_link_options(tambrel_compiler INTERFACE -Wl,--as-needed)
if(TAMBREL_WARNINGS_AS_ERRORS)
  target_compile_options(tambrel_compiler INTERFACE -Werror)
endif()

if(TAMBREL_SANITIZERS)
  target_compile_options(tambrel_compiler INTERFACE
    -fsanitize=${TAMBREL_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(tambrel_compiler INTERFACE -fsanitize=${TAMBREL_SANITIZERS})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU") # Which takes what a sanitizer checks for what is not initialized.
    target_compile_options(tambrel_compiler INTERFACE -Wno-maybe-uninitialized)
  endif()
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  # A precompiled header is named by its defines and content, which ccache must be told to accept. What one checkout has
  # compiled serves another, wherever that stands.
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
    CCACHE_SLOPPINESS=pch_defines,time_macros CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CCACHE_PROGRAM})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    add_compile_options("SHELL:-Xclang -fno-pch-timestamp")
  endif()
endif()

# A room of the house: a static library that exports its own folder and nothing else.
function(tambrel_library name)
  add_library(${name} STATIC ${ARGN})
  target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE tambrel_compiler)
endfunction()
