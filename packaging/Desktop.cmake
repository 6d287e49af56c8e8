# The window with its manual page, desktop entries, metainfo and icons.
install(TARGETS ordovan RUNTIME COMPONENT desktop)
configure_file(man/ordovan.1.in ${made}/ordovan.1 @ONLY)
ordovan_compress(${made}/ordovan.1 ${made}/ordovan.1.gz)
list(APPEND texts ${made}/ordovan.1.gz)
install(FILES ${made}/ordovan.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT desktop)

set(entries ${CMAKE_INSTALL_DATADIR}/applications)
configure_file(desktop/application.desktop.in ${made}/${ORDOVAN_APPLICATION_ID}.desktop @ONLY)
install(FILES ${made}/${ORDOVAN_APPLICATION_ID}.desktop DESTINATION ${entries} COMPONENT desktop)
configure_file(desktop/folder.desktop.in ${made}/folder.desktop @ONLY)
install(FILES ${made}/folder.desktop DESTINATION ${entries} RENAME zz.${ORDOVAN_APPLICATION_ID}.folder.desktop
        COMPONENT desktop)
set(help "")
if(ORDOVAN_DOCUMENTATION)
  set(help "  <url type=\"help\">${ORDOVAN_DOCUMENTATION}</url>\n")
endif()
configure_file(desktop/metainfo.xml.in ${made}/${ORDOVAN_APPLICATION_ID}.metainfo.xml @ONLY)
install(FILES ${made}/${ORDOVAN_APPLICATION_ID}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo
        COMPONENT desktop)

# The guide that the Help item opens: pages for a browser, of all that is about using ordovan+.
add_executable(ordovan-guide guide/render.cpp)
target_link_libraries(ordovan-guide PRIVATE ordovan_flags Qt6::Gui)
set(documents user-guide command-line installing trash safety performance)
foreach(document README history journal rules run-record settings trash-record)
  list(APPEND documents formats/${document})
endforeach()
set(guide ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_DATADIR}/ordovan/guide)
list(TRANSFORM documents REPLACE "(.+)" "${PROJECT_SOURCE_DIR}/docs/\\1.md" OUTPUT_VARIABLE sources)
list(TRANSFORM documents REPLACE "(.+)" "${guide}/\\1.html" OUTPUT_VARIABLE pages)
file(GLOB shown CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/pictures/*.png)
add_custom_command(
  OUTPUT ${pages}
  COMMAND ${CMAKE_COMMAND} -E env ASAN_OPTIONS=detect_leaks=0 $<TARGET_FILE:ordovan-guide> ${guide}
          ${PROJECT_SOURCE_DIR}/docs ${documents}
  COMMAND ${CMAKE_COMMAND} -E copy_directory ${PROJECT_SOURCE_DIR}/docs/pictures ${guide}/pictures
  DEPENDS ordovan-guide ${sources} ${shown} VERBATIM)
list(APPEND texts ${pages})
install(DIRECTORY ${guide} DESTINATION ${CMAKE_INSTALL_DATADIR}/ordovan COMPONENT desktop)

add_executable(ordovan-icons icons/render.cpp)
target_link_libraries(ordovan-icons PRIVATE ordovan_flags Qt6::Gui Qt6::Svg)
set(drawings ${PROJECT_SOURCE_DIR}/OrdovanApp/theme/icons)
set(small ${drawings}/applicationSmall.svg)
set(large ${drawings}/application.svg)
set(sizes 16 22 24 32 48 64 96 128 256 512)
file(MAKE_DIRECTORY ${made}/icons)
list(TRANSFORM sizes REPLACE "(.+)" "${made}/icons/\\1.png" OUTPUT_VARIABLE pictures)
add_custom_command(OUTPUT ${pictures} COMMAND ordovan-icons ${made}/icons ${small} ${large}
                   DEPENDS ordovan-icons ${small} ${large} VERBATIM)
list(APPEND texts ${pictures})
set(theme ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
foreach(size IN LISTS sizes)
  install(FILES ${made}/icons/${size}.png DESTINATION ${theme}/${size}x${size}/apps
          RENAME ${ORDOVAN_APPLICATION_ID}.png COMPONENT desktop)
endforeach()
install(FILES ${large} DESTINATION ${theme}/scalable/apps RENAME ${ORDOVAN_APPLICATION_ID}.svg COMPONENT desktop)
ordovan_install_papers(desktop ordovan)
