# Debian packages, one for each component: "cpack" in a build folder.
# scripts/package makes those that are given away.
set(MORVUNP_MAINTAINER "The morvunp developers <morvunp@localhost>"
    CACHE STRING "Who answers for packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT ${MORVUNP_MAINTAINER})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_COMPONENTS_ALL library development command)
if(TARGET morvunp_desktop)
  list(APPEND CPACK_COMPONENTS_ALL desktop)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(own_library "libmorvunp${MORVUNP_SOVERSION} (= ${PROJECT_VERSION}-1)")

# "contrib" where the RAR engine, which is in non-free, is linked.
set(area)
if(MORVUNP_HAS_RAR)
  set(area contrib/)
endif()
function(morvunp_package component name section summary text)
  string(TOUPPER ${component} key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${area}${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_DESCRIPTION "${summary}\n${text}" PARENT_SCOPE)
endfunction()
set(about "morvunp opens archives of the formats 7z, cabinet, ISO 9660 and UDF${and_rar},
split sets too, and writes nothing outside the target folder.
.
")
morvunp_package(library libmorvunp${MORVUNP_SOVERSION} libs "unpacks archives of several formats"
                "${about}This package holds the library that programs load.")
morvunp_package(development libmorvunp-dev libdevel
                "unpacks archives of several formats (development files)"
                "${about}This package holds what is needed to build programs with the library.")
morvunp_package(command morvunp utils "unpacks archives of several formats (command)"
                "${about}This package holds the terminal command.")
morvunp_package(desktop morvunp-desktop utils "unpacks archives of several formats (window)"
                "${about}This package holds the desktop window.")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_RECOMMENDS "p7zip-full | 7zip")
# The buttons that Qt labels itself, in the languages of the window.
set(CPACK_DEBIAN_DESKTOP_PACKAGE_RECOMMENDS "qt6-translations-l10n")
# What other packages ask for when they are linked with the library.
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/shlibs
     "libmorvunp ${MORVUNP_SOVERSION} libmorvunp${MORVUNP_SOVERSION} (>= ${PROJECT_VERSION})\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_BINARY_DIR}/shlibs
                                               ${CMAKE_CURRENT_LIST_DIR}/debian/triggers)
foreach(key IN ITEMS DEVELOPMENT COMMAND DESKTOP)
  set(CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${own_library}")
endforeach()
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)

# Documents and compressed manual pages, as Debian wants them in each package.
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian/documents.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian/scripts.cmake)
set(CPACK_MORVUNP_SOURCE ${PROJECT_SOURCE_DIR})
include(CPack)
