# Debian packages, made by CPack: lodex, and lodex-dev for programs that are built on the libraries.

set(LODEX_MAINTAINER "lodex developers <developers@lodex.invalid>" CACHE STRING "Maintainer named in packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME lodex)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${LODEX_MAINTAINER})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS OFF)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
# As dpkg-shlibdeps sees them; what is opened at run time comes with the toolkit's own packages.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME lodex)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION science)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SUGGESTS "bash-completion, xvfb")
# The first line is the summary.
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "Coarsening, refining and upscaling of corner-point grids
Coarsens and refines the corner-point grids of geological and flow models,
carries porosity, permeability and facies from a fine grid to a coarse one,
and groups layers into flow units. Reads and writes GRDECL, EGRID with INIT,
and ROFF; writes VTU.

lodex runs command scripts without a display; lodex-workbench is the desktop
application.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME lodex-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "lodex (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "cmake")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "Coarsening of corner-point grids - headers and CMake package
Interfaces of lodex for programs that make, coarsen and upscale corner-point
grids by its commands, or that open its dialogs; with examples.")
if(LODEX_QT)
  # Icons of the toolkit's own widgets are drawn from SVG; its texts in other languages are a package of their own.
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS "qt6-translations-l10n, shared-mime-info, hicolor-icon-theme")
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS "qt6-base-dev")
endif()

# What a Debian package keeps about itself.
execute_process(COMMAND date --utc --rfc-email --date=${RELEASE_DAY} OUTPUT_VARIABLE RELEASE_DATE
                OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
configure_file(debian/changelog.in debian/changelog @ONLY)
foreach(COMPONENT RUNTIME DEVELOPMENT)
  string(TOLOWER ${COMPONENT} LOWER)
  set(DOC_DIR ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME})
  install(FILES debian/copyright DESTINATION ${DOC_DIR} COMPONENT ${LOWER} EXCLUDE_FROM_ALL)
  add_custom_command(OUTPUT debian/${LOWER}/changelog.gz
                     COMMAND ${CMAKE_COMMAND} -E make_directory debian/${LOWER}
                     COMMAND ${GZIP_PROGRAM} -9nc debian/changelog > debian/${LOWER}/changelog.gz
                     DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/debian/changelog VERBATIM)
  add_custom_target(changelog_${LOWER} ALL DEPENDS debian/${LOWER}/changelog.gz)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/debian/${LOWER}/changelog.gz DESTINATION ${DOC_DIR} COMPONENT ${LOWER}
          EXCLUDE_FROM_ALL)
endforeach()

include(CPack)
