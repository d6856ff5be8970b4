# Builds that watch themselves: sanitizers, and counters for the coverage report. They concern
# every object of the build, the tests' too.
set(HOTFIX_SANITIZE "" CACHE STRING "Sanitizers to build with, such as address,undefined")
option(HOTFIX_COVERAGE "Count executed lines and branches" OFF)

if(HOTFIX_SANITIZE)
  add_compile_options(-fsanitize=${HOTFIX_SANITIZE} -fno-sanitize-recover=all)
  # GCC sees uninitialised values in what it instruments itself.
  add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  add_link_options(-fsanitize=${HOTFIX_SANITIZE})
endif()
if(HOTFIX_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()
if(CMAKE_BUILD_TYPE STREQUAL "Debug")
  add_compile_definitions(_GLIBCXX_ASSERTIONS)
endif()

# Precompiled headers make the tests build in half the time. A compiler cache does better without.
option(HOTFIX_PRECOMPILED_HEADERS "Precompile what every test includes" ON)
if(CMAKE_CXX_COMPILER_LAUNCHER)
  set(HOTFIX_PRECOMPILED_HEADERS OFF)
endif()
