# Where things go with "cmake --install build --prefix DIR", and the Debian package that
# "cpack -G DEB" makes of them in the build directory.
include(GNUInstallDirs)

install(TARGETS orxrestore orxkdb RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
foreach(page IN LISTS manual_pages)
  string(REGEX MATCH "[0-9]$" section "${page}")
  install(FILES "${page}" DESTINATION "${CMAKE_INSTALL_MANDIR}/man${section}")
endforeach()

foreach(program orxkdb orxrestore)
  install(FILES "${completion_directory}/${program}.bash" RENAME ${program}
          DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
  install(FILES "${completion_directory}/${program}.fish"
          DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d")
endforeach()
# What belongs to the system lies elsewhere for zsh than what was added to it.
install(CODE "
  if(CMAKE_INSTALL_PREFIX MATCHES \"/usr$\")
    set(functions vendor-completions)
  else()
    set(functions site-functions)
  endif()
  file(INSTALL \"${completion_directory}/_orxkdb\" \"${completion_directory}/_orxrestore\"
       DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/zsh/\${functions}\")
")

install(FILES README.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
file(GLOB documents CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/docs/*.md")
install(FILES ${documents} DESTINATION "${CMAKE_INSTALL_DOCDIR}/docs")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orxrestore)
set(CPACK_PACKAGE_VENDOR "")
set(CPACK_PACKAGE_CONTACT "orxrestore maintainers <maintainers@orxrestore.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "restore, merge and inspect a TDV configuration database")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "orxrestore restores the configuration database of a management server from
a text backup, merges the backup of another one into it, or rebuilds its use
counts. orxkdb makes, reads, copies, compares and inspects such databases.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
include(CPack)
