# HOTFIX_SYSTEM: the folder of src/platform/ with the sources of the system that is built for. A
# system that is not listed has no such folder; docs/porting.md says what belongs into one. This is
# the only list of them: scripts/systems.py reads it too.
set(HOTFIX_SYSTEM_Linux linux)
set(HOTFIX_SYSTEM_Darwin macos)

set(HOTFIX_SYSTEM ${HOTFIX_SYSTEM_${CMAKE_SYSTEM_NAME}})
if(NOT HOTFIX_SYSTEM)
  message(FATAL_ERROR "There is no platform folder for ${CMAKE_SYSTEM_NAME}; see docs/porting.md.")
endif()

# The folders below platform/ that this system's build takes its sources and tests from.
set(HOTFIX_PLATFORM_FOLDERS files posix ${HOTFIX_SYSTEM})
