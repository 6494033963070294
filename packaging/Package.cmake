# "make package": a Debian package of the installed files. Library dependencies are found by
# dpkg-shlibdeps from the binaries, not listed by hand.
set(doc_dir ${CMAKE_INSTALL_DATADIR}/doc/corvella)
add_custom_command(OUTPUT changelog.Debian.gz
    COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/packaging/changelog > changelog.Debian.gz
    DEPENDS ${PROJECT_SOURCE_DIR}/packaging/changelog VERBATIM)
add_custom_target(corvella_changelog ALL DEPENDS changelog.Debian.gz)
install(FILES packaging/copyright ${CMAKE_BINARY_DIR}/changelog.Debian.gz DESTINATION ${doc_dir})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME corvella)
set(CPACK_PACKAGE_VENDOR Tovanex)
set(CPACK_PACKAGE_CONTACT "Corvella developers <corvella@tovanex.com>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "removes browser data when a browser quits")
# The extended description; the summary above is its first line. CPack indents it for the control file.
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "Corvella lives in the tray. When a browser it protects quits (Firefox,
Chromium, Google Chrome, Opera, Brave, Vivaldi, Microsoft Edge, LibreWolf,
Waterfox or Floorp), it removes the data chosen for that
browser: cookies, site storage, cache, history, favicons, page previews,
form values, downloads, site preferences, search engines and plug-in
data. Bookmarks, pinned sites, extensions and passwords are kept, and the
browser profile still opens afterwards.

The package also holds corvella-clean, which runs the same removal from
the command line.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE ${CORVELLA_HOMEPAGE_URL})
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Plug-ins Qt loads at run time, which no binary names: the tray and window icons are SVG.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6svg6")
# Qt's own German (and other) texts of standard buttons and the file dialog.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-translations-l10n")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
include(CPack)
