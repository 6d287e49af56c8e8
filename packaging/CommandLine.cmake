# ordovan-cli with its manual page, completions, and a timer to copy from.
set(reference ${made}/reference)
file(MAKE_DIRECTORY ${reference})
add_custom_command(
  OUTPUT ${reference}/ordovan-cli.1 ${reference}/ordovan-cli.bash ${reference}/_ordovan-cli
         ${reference}/ordovan-cli.fish
  COMMAND ordovan-cli-docs ${reference} ${PROJECT_VERSION} ${ORDOVAN_RELEASE_DATE} ${ORDOVAN_HOMEPAGE}
  DEPENDS ordovan-cli-docs VERBATIM)
ordovan_compress(${reference}/ordovan-cli.1 ${made}/ordovan-cli.1.gz)
list(APPEND texts ${made}/ordovan-cli.1.gz)

install(TARGETS ordovan-cli RUNTIME COMPONENT cli)
install(FILES ${made}/ordovan-cli.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT cli)
install(FILES ${reference}/ordovan-cli.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        RENAME ordovan-cli COMPONENT cli)
# zsh looks into vendor-completions below /usr alone, and into site-functions below /usr/local.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(functions vendor-completions)
else()
  set(functions site-functions)
endif()
install(FILES ${reference}/_ordovan-cli DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/${functions} COMPONENT cli)
install(FILES ${reference}/ordovan-cli.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d
        COMPONENT cli)
install(FILES systemd/ordovan-preview.service systemd/ordovan-preview.timer
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/ordovan-cli/examples COMPONENT cli)
install(FILES ${PROJECT_SOURCE_DIR}/docs/command-line.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/ordovan-cli
        COMPONENT cli)
ordovan_install_papers(cli ordovan-cli)
