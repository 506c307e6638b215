# Who Lumo is to a Linux desktop, and its Debian package (`cpack -G DEB`, see scripts/package).

# One application ID names the desktop entry, the metainfo, the icon and the running program.
set(LUMO_APP_ID io.github.lumo.Lumo)
set(LUMO_HOMEPAGE https://github.com/lumo/lumo)
set(LUMO_LICENSE LicenseRef-proprietary)
# The date of the release that PROJECT_VERSION names; change both together.
set(LUMO_RELEASE_DATE 2026-11-23)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME lumo)
set(CPACK_PACKAGE_VENDOR "The Lumo developers")
set(CPACK_PACKAGE_CONTACT "The Lumo developers <lumo@users.noreply.github.com>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "calculation notepad that answers every line as you type")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE ${LUMO_HOMEPAGE})
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "Lumo is a calculation notepad. You type calculations into sheets of plain
text; every line is evaluated as you type and its answer appears in a column
on the right. Lines carry units that convert and cancel, name their answers,
hold lists and text, draw plots and bar charts, and form small Python-style
programs. Everything is in Japanese and English.
.
The package holds the desktop application lumo-calc and the lumo command,
which evaluates sheets in the terminal.")
# dpkg-shlibdeps works out the libraries (Qt, utf8proc, libuuid); these are what it can't see.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "hicolor-icon-theme")
# Wayland sessions want the Wayland platform plugin; the window icon, an SVG, wants Qt SVG.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-wayland, libqt6svg6")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "fonts-noto-cjk")

include(CPack)
