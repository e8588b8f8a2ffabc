# `cpack --config build/CPackConfig.cmake -G DEB` (from the source folder, after a build) makes a
# Debian package of what `cmake --install` puts in place, with the libraries it needs as
# dependencies (found by dpkg-shlibdeps), installed under /usr.
set(CPACK_PACKAGE_NAME velmplayerpro)
set(CPACK_PACKAGE_VENDOR "Velm Player")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Media player for files, streams, IPTV playlists and web videos")
set(CPACK_PACKAGE_HOMEPAGE_URL "https://velmplayer.app")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
# Whoever publishes the package names themselves here (-DVELM_PACKAGE_CONTACT="Name <mail>").
set(VELM_PACKAGE_CONTACT "VelmPlayerPro developers" CACHE STRING "The package's maintainer")
set(CPACK_PACKAGE_CONTACT ${VELM_PACKAGE_CONTACT})
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The sound server the recorder listens to is a program, not a library it links; Wayland
# sessions want Qt's Wayland platform.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "pulseaudio | pipewire-pulse, qt6-wayland")
include(CPack)
