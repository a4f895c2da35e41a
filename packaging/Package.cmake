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

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "MIDI file player with the look of retro studio hardware")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "\
Tambrel opens Standard MIDI Files and MIDI 2.0 Clip Files at once, shows
what is in them, and plays them through a General MIDI synthesizer: with a
seven-segment counter, a timeline to seek in, and a lane of phrase bars for
every track. Files come to its window from anywhere on the desktop, and
media keys drive it.
.
tambrel-midi does the same without a window: it shows facts, converts to and
from MIDI 2.0 clips, and renders to WAV.")
# The actions of the desktop file are called through gapplication where the launcher does not call them itself.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS
  "timgm6mb-soundfont | sf3-soundfont-gm | sf2-soundfont-gm")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-jetbrains-mono, libglib2.0-bin, qt6-wayland")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "playerctl, xdg-desktop-portal, xdg-utils")

# Not tried on Fedora or openSUSE, only built and looked at. What it links, rpmbuild finds out; the names of banks are
# those of Fedora and openSUSE, one of which is in each.
string(REPLACE "\n.\n" "\n\n" CPACK_RPM_PACKAGE_DESCRIPTION "${CPACK_DEBIAN_PACKAGE_DESCRIPTION}")
set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
set(CPACK_RPM_PACKAGE_LICENSE MIT)
set(CPACK_RPM_PACKAGE_GROUP Applications/Multimedia)
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
