# CMake toolchain: macOS from elsewhere, with the clang, the libc++ and the libSystem that zig brings.
#
#   cmake --toolchain .../zig-macos.cmake -DMACOS_ARCH=aarch64
#
# Environment: see ../setup; MACOS_MINIMUM is the oldest macOS that the program is to run on (11.0).
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_VERSION 20)

set(MACOS_ARCH aarch64 CACHE STRING "aarch64 or x86_64")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MACOS_ARCH)
if(MACOS_ARCH STREQUAL "aarch64")
  set(CMAKE_SYSTEM_PROCESSOR arm64)
else()
  set(CMAKE_SYSTEM_PROCESSOR x86_64)
endif()

get_filename_component(here ${CMAKE_CURRENT_LIST_DIR}/.. ABSOLUTE)
foreach(language C OBJC)
  set(CMAKE_${language}_COMPILER ${here}/toolchain/${MACOS_ARCH}-macos-cc)
endforeach()
# Besides the declarations that no free SDK has: Apple's libc++ is part of the system, so what its
# older versions lack is marked. zig, which links its own, takes the marks off; here they are on
# again, so that std::from_chars for double, say, is found out.
foreach(language CXX OBJCXX)
  set(CMAKE_${language}_COMPILER ${here}/toolchain/${MACOS_ARCH}-macos-c++)
  string(APPEND CMAKE_${language}_FLAGS_INIT
         " -isystem ${here}/sdk/include -iframework ${here}/sdk/Frameworks"
         " -U_LIBCPP_HAS_VENDOR_AVAILABILITY_ANNOTATIONS"
         " -D_LIBCPP_HAS_VENDOR_AVAILABILITY_ANNOTATIONS=1"
         " -Wno-macro-redefined -Wno-nullability-completeness -Wunguarded-availability")
  # The compilers leave it out where it is not asked for.
  set(CMAKE_${language}_STANDARD_LIBRARIES_INIT -lc++)
endforeach()
foreach(kind EXE SHARED MODULE)
  string(APPEND CMAKE_${kind}_LINKER_FLAGS_INIT " -L${here}/sdk/lib -F${here}/sdk/Frameworks")
endforeach()

# The header is zig's.
set(Iconv_INCLUDE_DIR ${here}/sdk/include)
set(Iconv_LIBRARY ${here}/sdk/lib/libiconv.tbd)

# CMake looks for Apple's programs; LLVM has the same.
set(CMAKE_OSX_SYSROOT "")
foreach(tool AR RANLIB NM STRIP INSTALL_NAME_TOOL OBJDUMP OTOOL)
  string(TOLOWER llvm-${tool} name)
  string(REPLACE "_" "-" name ${name})
  find_program(MACOS_${tool} NAMES ${name} REQUIRED)
  set(CMAKE_${tool} ${MACOS_${tool}})
endforeach()

# Nothing of this machine belongs to the other: only the prefix of `deps` is searched.
set(CMAKE_FIND_ROOT_PATH $ENV{MACOS_DEPS}/${MACOS_ARCH})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_FIND_FRAMEWORK NEVER)
set(ENV{PKG_CONFIG_LIBDIR} $ENV{MACOS_DEPS}/${MACOS_ARCH}/lib/pkgconfig)
