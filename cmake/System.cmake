# HOTFIX_SYSTEM: the folder of src/platform/ with the sources of the system that is built for. A
# system that is not listed has no such folder; docs/porting.md says what belongs into one. This is
# the only list of them: scripts/systems.py reads it too.
set(HOTFIX_SYSTEM_Linux linux)
set(HOTFIX_SYSTEM_Darwin macos)

set(HOTFIX_SYSTEM ${HOTFIX_SYSTEM_${CMAKE_SYSTEM_NAME}})
if(NOT HOTFIX_SYSTEM)
  message(FATAL_ERROR "There is no platform folder for ${CMAKE_SYSTEM_NAME}; see docs/porting.md.")
endif()

# What the build asks of a system besides its folder: whether its sources are Objective-C++ too,
# which frameworks and libraries of the system the library is linked to, under which name libxml2 is
# loaded (when it cannot be asked itself; so libarchive), whether its linker takes a version script (or
# else a list of symbols), where the libraries lie that everybody has there, what kind of package cpack
# makes, whether there are tools there that make several packages of one build, and whether the tests of
# the whole program run there: they need mount namespaces and look into /proc.
set(HOTFIX_OBJECTIVE_C OFF)
set(HOTFIX_FRAMEWORKS "")
set(HOTFIX_SYSTEM_LIBRARIES "")
set(HOTFIX_PACKAGE_GENERATOR TGZ)
set(HOTFIX_XML_LIBRARY "")
set(HOTFIX_ARCHIVE_LIBRARY "")
set(HOTFIX_VERSION_SCRIPT ON)
set(HOTFIX_NAMESPACES OFF)
set(HOTFIX_PACKAGE_COMPONENTS OFF)
if(HOTFIX_SYSTEM STREQUAL "linux")
  set(HOTFIX_NAMESPACES ON)
  set(HOTFIX_PACKAGE_COMPONENTS ON)
elseif(HOTFIX_SYSTEM STREQUAL "macos")
  set(HOTFIX_OBJECTIVE_C ON)
  set(HOTFIX_FRAMEWORKS "-framework AppKit" "-framework Foundation" "-framework CoreFoundation"
                        -lobjc)
  set(HOTFIX_PACKAGE_GENERATOR productbuild)
  set(HOTFIX_SYSTEM_LIBRARIES "^(/usr/lib|/System)/")
  set(HOTFIX_XML_LIBRARY "/usr/lib/libxml2.2.dylib")
  set(HOTFIX_ARCHIVE_LIBRARY "/usr/lib/libarchive.2.dylib")
  set(HOTFIX_VERSION_SCRIPT OFF)
endif()

# The folders below platform/ that this system's build takes its sources and tests from.
set(HOTFIX_PLATFORM_FOLDERS files posix ${HOTFIX_SYSTEM})
