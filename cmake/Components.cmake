# What packaging/make makes of one build: a package for each component of cmake/Install.cmake, as DEB
# and as RPM. packaging/release/finish looks after what they hold besides what is installed.
set(HOTFIX_PACKAGE_CONTACT "HotfixInstaller developers <developers@hotfix-installer.example>"
    CACHE STRING "Who answers for the packages: a name and an address")

# hotfix_component(name section summary description)
function(hotfix_component name section summary description)
  string(TOUPPER ${name} upper)
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${summary}\n${description}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_RPM_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_RPM_${upper}_PACKAGE_SUMMARY "${summary}" PARENT_SCOPE)
  set(CPACK_RPM_${upper}_PACKAGE_DESCRIPTION "${description}" PARENT_SCOPE)
  list(APPEND CPACK_COMPONENTS_ALL ${name})
  set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} PARENT_SCOPE)
endfunction()

hotfix_component(
  hotfix-installer admin "installs hotfixes into an Eclipse-based client platform"
  "HotfixInstaller checks a hotfix package and the instance that it is for,
removes an older hotfix, brings in manifests, settings and key stores,
and lets the platform's own launcher install the features. hotfixctl tells
beforehand what that would do, and afterwards what has become of it. The
collection kiv.hotfix lets Ansible do all that on many machines.")
set(CPACK_DEBIAN_HOTFIX-INSTALLER_PACKAGE_SUGGESTS ansible-core)
hotfix_component(
  ${HOTFIX_LIBRARY_COMPONENT} libs "library of the installer of hotfixes"
  "What installers of an Eclipse-based client platform share: property lists,
manifests, settings, and the workflows of a hotfix. Programs that are linked
to it need this package.")
hotfix_component(
  ${HOTFIX_HEADER_COMPONENT} libdevel "library of the installer of hotfixes, for developers"
  "What installers of an Eclipse-based client platform share: property lists,
manifests, settings, and the workflows of a hotfix. Headers, the library in
its static form, and what CMake and pkg-config ask for.")
set(CPACK_DEBIAN_LIBHOTFIX-DEV_PACKAGE_DEPENDS
    "${HOTFIX_LIBRARY_COMPONENT} (= ${PROJECT_VERSION})" libutf8proc-dev)
set(CPACK_RPM_LIBHOTFIX-DEV_PACKAGE_REQUIRES "${HOTFIX_LIBRARY_COMPONENT} = ${PROJECT_VERSION}"
                                             "pkgconfig(libutf8proc)")
if(HOTFIX_BUILD_SAMPLE)
  hotfix_component(
    hotfix-testkit devel "instances and hotfixes to try the installer on"
    "Makes sample instances of an Eclipse-based client platform, with a stand-in
for the platform's launcher, and hotfixes for them; on a machine with a Java
development kit also instances of the real platform.")
  # Hotfixes are made by hotfixctl.
  set(CPACK_DEBIAN_HOTFIX-TESTKIT_PACKAGE_DEPENDS "hotfix-installer (= ${PROJECT_VERSION})")
  set(CPACK_DEBIAN_HOTFIX-TESTKIT_PACKAGE_SUGGESTS "default-jdk-headless, g++")
  set(CPACK_RPM_HOTFIX-TESTKIT_PACKAGE_REQUIRES "hotfix-installer = ${PROJECT_VERSION}")
endif()

set(CPACK_PACKAGE_CONTACT ${HOTFIX_PACKAGE_CONTACT})
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/release/finish.cmake)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE hotfix-installer)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# Nothing of the machine and of the hour goes into a package; stripping and compressing is done.
set(CPACK_RPM_COMPONENT_INSTALL ON)
set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
set(CPACK_RPM_PACKAGE_RELOCATABLE OFF)
set(CPACK_RPM_PACKAGE_LICENSE "No licence has been chosen by the owner yet")
set(CPACK_RPM_SPEC_MORE_DEFINE
    "%define _buildhost localhost
%define use_source_date_epoch_as_buildtime 1
%define clamp_mtime_to_source_date_epoch 1
%define _build_id_links none
%define debug_package %{nil}
%define __os_install_post %{nil}")
# The folders that are others' too.
set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
    /usr/sbin
    /usr/libexec
    /usr/lib64/cmake
    /usr/lib64/pkgconfig
    /usr/share/ansible
    /usr/share/ansible/collections
    /usr/share/ansible/collections/ansible_collections
    /usr/share/bash-completion
    /usr/share/bash-completion/completions
    /usr/share/doc
    /usr/share/fish
    /usr/share/fish/vendor_completions.d
    /usr/share/man
    /usr/share/man/man1
    /usr/share/man/man5
    /usr/share/man/man8
    /usr/share/zsh
    /usr/share/zsh/site-functions)
