# cpack --config <build folder>/CPackConfig.cmake: what cmake --install lays down, as one package of the
# system's own kind; several packages of one build are made by packaging/make. A package that carries a
# hotfix is made by make-package.
set(HOTFIX_SIGNING_IDENTITY "" CACHE STRING "Who signs packages, where the system asks for it")

set(CPACK_GENERATOR ${HOTFIX_PACKAGE_GENERATOR})
set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_VENDOR ${PROJECT_NAME})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr/local)
set(CPACK_STRIP_FILES ON)

if(HOTFIX_PACKAGE_COMPONENTS)
  include(cmake/Components.cmake)
else()
  set(CPACK_MONOLITHIC_INSTALL ON)
endif()

# Only one generator reads these.
set(CPACK_PRODUCTBUILD_IDENTIFIER com.kiv.hotfix-installer)
set(CPACK_PRODUCTBUILD_IDENTITY_NAME ${HOTFIX_SIGNING_IDENTITY})
set(CPACK_PKGBUILD_IDENTITY_NAME ${HOTFIX_SIGNING_IDENTITY})
list(APPEND CMAKE_MODULE_PATH ${PROJECT_SOURCE_DIR}/packaging/cpack)

include(CPack)
