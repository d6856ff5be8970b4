# cmake --install: the program and its manual page, the library in both forms, the headers that
# other installers of the platform build on, the CMake package and the pkg-config file.
#
# Components are the packages that cmake/Package.cmake makes: what names none is the installer's.
include(CMakePackageConfigHelpers)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME hotfix-installer)
set(HOTFIX_LIBRARY_COMPONENT libhotfix${PROJECT_VERSION_MAJOR})
set(HOTFIX_HEADER_COMPONENT libhotfix-dev)

# The public headers. They include nothing but one another and the standard library.
install(
  DIRECTORY include/hotfix
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT ${HOTFIX_HEADER_COMPONENT}
  FILES_MATCHING
  PATTERN "*.h")

# An administrator's program: it changes installations and wants root.
if(TARGET HotfixInstaller)
  install(TARGETS HotfixInstaller RUNTIME DESTINATION ${CMAKE_INSTALL_SBINDIR})
endif()
# For everybody; what needs root says so.
if(TARGET hotfixctl)
  install(TARGETS hotfixctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  file(GLOB schemas CONFIGURE_DEPENDS src/ctl/schema/*.schema.json)
  install(FILES ${schemas} DESTINATION ${CMAKE_INSTALL_DATADIR}/hotfix/schema)
  file(GLOB pages CONFIGURE_DEPENDS packaging/*.1)
  install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  # Where each shell looks for what others bring.
  install(FILES packaging/completions/hotfixctl.bash
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME hotfixctl)
  install(FILES packaging/completions/_hotfixctl
          DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
  install(FILES packaging/completions/hotfixctl.fish
          DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
  # Where Ansible looks for collections, below /usr.
  install(DIRECTORY fleet/ansible/
          DESTINATION ${CMAKE_INSTALL_DATADIR}/ansible/collections/ansible_collections/kiv/hotfix
          PATTERN __pycache__ EXCLUDE)
endif()
install(FILES packaging/HotfixInstaller.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8)
file(GLOB formats CONFIGURE_DEPENDS packaging/*.5)
install(FILES ${formats} DESTINATION ${CMAKE_INSTALL_MANDIR}/man5)

install(
  TARGETS hotfix hotfix_shared
  EXPORT hotfix-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
          COMPONENT ${HOTFIX_LIBRARY_COMPONENT}
          NAMELINK_COMPONENT ${HOTFIX_HEADER_COMPONENT}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${HOTFIX_HEADER_COMPONENT})

# A folder with the archive and no shared library, for pkg-config --static.
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/archive)
file(CREATE_LINK ../libhotfix.a ${PROJECT_BINARY_DIR}/archive/libhotfix.a SYMBOLIC)
install(FILES ${PROJECT_BINARY_DIR}/archive/libhotfix.a
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/hotfix COMPONENT ${HOTFIX_HEADER_COMPONENT})

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/hotfix)
install(EXPORT hotfix-targets NAMESPACE hotfix:: DESTINATION ${package_folder}
        COMPONENT ${HOTFIX_HEADER_COMPONENT})
configure_package_config_file(packaging/hotfix-config.cmake.in hotfix-config.cmake
                              INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(hotfix-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/hotfix-config.cmake
              ${PROJECT_BINARY_DIR}/hotfix-config-version.cmake
        DESTINATION ${package_folder} COMPONENT ${HOTFIX_HEADER_COMPONENT})

# What the archive is linked with.
set(pc_libraries ${HOTFIX_FRAMEWORKS})
if(HOTFIX_UTF8PROC_LIBRARY)
  list(APPEND pc_libraries -lutf8proc)
endif()
list(TRANSFORM CMAKE_DL_LIBS PREPEND -l OUTPUT_VARIABLE dl)
list(APPEND pc_libraries ${dl})
list(JOIN pc_libraries " " pc_libraries)

# Places are told from where the .pc files lie: the prefix is known only when the library is installed
# (cmake --install --prefix), and is another one while a package is made.
file(RELATIVE_PATH up "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" up "${up}")
set(HOTFIX_PC_PREFIX "\${pcfiledir}/${up}")
set(HOTFIX_PC_LIBDIR "\${exec_prefix}/${CMAKE_INSTALL_LIBDIR}")
set(HOTFIX_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
set(HOTFIX_PC_LIBRARIES "${pc_libraries}")
foreach(file hotfix hotfix-libdir)
  configure_file(packaging/${file}.pc.in ${file}.pc @ONLY)
endforeach()
install(FILES ${PROJECT_BINARY_DIR}/hotfix.pc ${PROJECT_BINARY_DIR}/hotfix-libdir.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ${HOTFIX_HEADER_COMPONENT})
