# `cpack --preset release` makes the Debian package, `cpack --config build/CPackConfig.cmake -G RPM -B build` one for
# Fedora and openSUSE.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tambrel)
set(CPACK_PACKAGE_VENDOR "Kestrune Software")
set(CPACK_PACKAGE_CONTACT "Kestrune Software <support@kestrune.example>")
set(CPACK_PACKAGE_VERSION ${TAMBREL_SHORT_VERSION})
set(CPACK_PACKAGE_HOMEPAGE_URL "https://kestrune.example/tambrel/")
set(CPACK_STRIP_FILES ON)
set(CPACK_SET_DESTDIR ON)
set(CPACK_PACKAGE_RELOCATABLE OFF)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS ${CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS})
set(CPACK_INSTALL_CMAKE_PROJECTS
  "${CMAKE_BINARY_DIR};${PROJECT_NAME};ALL;/" "${CMAKE_BINARY_DIR};${PROJECT_NAME};debian;/")

# What only a Debian package has stays out of the others.
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_BINARY_DIR}/PackageOfKind.cmake)
file(WRITE ${CPACK_PROJECT_CONFIG_FILE} "
if(NOT CPACK_GENERATOR STREQUAL DEB)
  set(CPACK_INSTALL_CMAKE_PROJECTS \"${CMAKE_BINARY_DIR};${PROJECT_NAME};ALL;/\")
endif()
")

# Of what debian/control says of the package, but for what only debhelper fills in.
file(READ ${PROJECT_SOURCE_DIR}/debian/control control)
set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/debian/control)
string(REGEX REPLACE ".*\nPackage:" "" control "${control}")
function(from_control field result)
  string(REGEX MATCH "\n${field}: ([^\n]*(\n [^\n]*)*)" found "${control}")
  string(REGEX REPLACE "\\\${[a-zA-Z:]+},[ \n]*" "" text "${CMAKE_MATCH_1}")
  set(${result} "${text}" PARENT_SCOPE)
endfunction()
from_control(Depends CPACK_DEBIAN_PACKAGE_DEPENDS)
from_control(Recommends CPACK_DEBIAN_PACKAGE_RECOMMENDS)
from_control(Suggests CPACK_DEBIAN_PACKAGE_SUGGESTS)
from_control(Description description)
string(REGEX MATCH "^([^\n]*)\n (.*)$" description "${description}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${CMAKE_MATCH_1}")
string(REPLACE "\n " "\n" CPACK_DEBIAN_PACKAGE_DESCRIPTION "${CMAKE_MATCH_2}")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

# Not tried on Fedora or openSUSE. Of what Debian's rpmlint says there remains that it is not signed, and that it looks for
# manuals as .bz2 and for a list of licences, which those systems set up otherwise. What it links, rpmbuild finds out; the
# names of banks are those of Fedora and openSUSE, one of which is in each.
string(REPLACE "\n.\n" "\n\n" CPACK_RPM_PACKAGE_DESCRIPTION "${CPACK_DEBIAN_PACKAGE_DESCRIPTION}")
set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
set(CPACK_RPM_PACKAGE_LICENSE MIT)
set(CPACK_RPM_PACKAGE_GROUP Applications/Multimedia)
set(CPACK_RPM_SPEC_MORE_DEFINE "%define packager ${CPACK_PACKAGE_CONTACT}")
set(CPACK_RPM_PACKAGE_REQUIRES "(fluid-soundfont-gm or fluid-soundfont)")
set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
  /usr/share/applications /usr/share/bash-completion /usr/share/bash-completion/completions /usr/share/dbus-1
  /usr/share/dbus-1/services /usr/share/doc /usr/share/fish /usr/share/fish/vendor_completions.d /usr/share/metainfo
  /usr/share/icons /usr/share/icons/hicolor /usr/share/icons/hicolor/scalable /usr/share/icons/hicolor/scalable/apps
  /usr/share/icons/hicolor/symbolic /usr/share/icons/hicolor/symbolic/apps /usr/share/man /usr/share/man/man1 /usr/share/mime
  /usr/share/mime/packages /usr/share/zsh /usr/share/zsh/vendor-completions)
foreach(size 16 22 24 32 48 64 128 256 512)
  list(APPEND CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
    /usr/share/icons/hicolor/${size}x${size} /usr/share/icons/hicolor/${size}x${size}/apps)
endforeach()
include(CPack)
