# The installer runs as root over folders that users can write: what the compiler and the linker
# can do against a memory error is switched on for everything that ships. Flags that a compiler or
# an architecture does not know are left out.
option(HOTFIX_HARDENED "Build with the hardening flags (needs optimisation)" OFF)

add_library(hotfix_hardening INTERFACE)
if(HOTFIX_HARDENED)
  include(CheckCXXCompilerFlag)
  include(CheckLinkerFlag)
  include(CheckPIESupported)
  check_pie_supported(LANGUAGES CXX)
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)

  # Distributions may predefine a lower level, hence the -U. Both are options, in one word: CMake
  # writes definitions before options, and merges options that it has seen.
  target_compile_options(hotfix_hardening INTERFACE "SHELL:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
  # Of the two libraries each minds its own.
  target_compile_definitions(
    hotfix_hardening INTERFACE _GLIBCXX_ASSERTIONS
                               _LIBCPP_HARDENING_MODE=_LIBCPP_HARDENING_MODE_EXTENSIVE)

  # What a compiler passes over with a warning it does not know either.
  set(CMAKE_REQUIRED_FLAGS -Werror)
  foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection)
    string(MAKE_C_IDENTIFIER "HOTFIX_HAS${flag}" known)
    check_cxx_compiler_flag(${flag} ${known})
    if(${known})
      target_compile_options(hotfix_hardening INTERFACE ${flag})
    endif()
  endforeach()
  unset(CMAKE_REQUIRED_FLAGS)
  foreach(flag -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack -Wl,--as-needed)
    string(MAKE_C_IDENTIFIER "HOTFIX_HAS${flag}" known)
    check_linker_flag(CXX ${flag} ${known})
    if(${known})
      target_link_options(hotfix_hardening INTERFACE ${flag})
    endif()
  endforeach()
endif()
