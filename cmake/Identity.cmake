# By which names the desktop and the packages know ordovan+.
set(ORDOVAN_APPLICATION_ID example.ordovan.ordovan CACHE STRING
    "Reverse domain name of the application: its desktop entry, icon and metainfo are called so")
set(ORDOVAN_HOMEPAGE https://ordovan.example CACHE STRING "Where people read about ordovan+")
set(ORDOVAN_DOCUMENTATION "" CACHE STRING
    "The web address that the Help item of the window opens; empty for the guide installed with it")

# The newest entry of the packages' changelog says when this version was released.
set(ORDOVAN_CHANGELOG ${PROJECT_SOURCE_DIR}/packaging/debian/changelog)
set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${ORDOVAN_CHANGELOG})
file(STRINGS ${ORDOVAN_CHANGELOG} changes REGEX "^(ordovan \\(| -- )")
list(GET changes 0 newest)
list(GET changes 1 signature)
if(NOT newest MATCHES "^ordovan \\(([0-9.]+)-([0-9]+)\\)" OR NOT CMAKE_MATCH_1 STREQUAL PROJECT_VERSION)
  message(FATAL_ERROR "${ORDOVAN_CHANGELOG} begins with \"${newest}\", but the version is ${PROJECT_VERSION}")
endif()
set(ORDOVAN_PACKAGE_REVISION ${CMAKE_MATCH_2})
if(NOT signature MATCHES " ([0-9][0-9]) ([A-Z][a-z][a-z]) ([0-9][0-9][0-9][0-9]) ")
  message(FATAL_ERROR "${ORDOVAN_CHANGELOG} has no date in \"${signature}\"")
endif()
set(months Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec)
list(FIND months ${CMAKE_MATCH_2} month)
math(EXPR month "${month} + 101")
string(SUBSTRING ${month} 1 2 month)
set(ORDOVAN_RELEASE_DATE ${CMAKE_MATCH_3}-${month}-${CMAKE_MATCH_1})
