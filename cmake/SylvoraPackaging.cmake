# The Debian package, made by CPack from the same install rules that `cmake --install` follows, so
# the package and an installation from source can never hold different files. Its dependencies are
# what dpkg-shlibdeps finds the installed binaries linked against, on the machine that builds it.
#   cmake --build build --target package   ->   build/sylvora_<version>_amd64.deb
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME sylvora)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "The Sylvora developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "ambient sound worlds: listen to them and build your own")
string(CONCAT CPACK_PACKAGE_DESCRIPTION
  "Sylvora plays ambient sound worlds: a world is a folder holding its loop sounds, its "
  "environment sounds and a picture. Loop sounds play one after another without end, "
  "crossfaded; environment sounds come back again and again at random moments and volumes. "
  "Five worlds come with it. The world editor builds new worlds from sound files, and "
  "sylvora-cli plays, renders and describes worlds from a terminal.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The Sylvora developers <sylvora@localhost>")
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Without the MIME database a file manager does not know a ".sylvora" folder is a world. Sylvora's
# own texts are built into the binaries; Qt's translations give the standard dialogs (files,
# message box buttons) the same language.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "shared-mime-info, desktop-file-utils, hicolor-icon-theme, qt6-translations-l10n")
set(CPACK_STRIP_FILES ON)
include(CPack)
