# The packages of a Debian, one for each component: `cmake --build build/release --target debs` leaves them in
# the build folder.

set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_SOURCE_DIR}/each-generator.cmake)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${TARNWICK_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE ${TARNWICK_SITE})
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)  # of the commit, where SOURCE_DATE_EPOCH tells it
configure_file(changelog.in changelog @ONLY)
add_custom_command(OUTPUT changelog.gz COMMAND gzip -9nkf changelog DEPENDS changelog VERBATIM)
add_custom_target(debian_changelog ALL DEPENDS changelog.gz)
get_property(packed GLOBAL PROPERTY TARNWICK_PACKED)

# tarnwick_deb(COMPONENT PACKAGE SECTION SUMMARY LINES DEPENDS): the libraries that it is linked to are found by
# dpkg-shlibdeps; those that it loads are in DEPENDS.
function(tarnwick_deb component package section summary lines depends)
  string(TOUPPER ${component} key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${package} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_DESCRIPTION "${summary}\n${lines}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz DESTINATION share/doc/${package} COMPONENT ${component})
  install(FILES ${CMAKE_SOURCE_DIR}/LICENSE RENAME copyright DESTINATION share/doc/${package} COMPONENT ${component})
endfunction()
tarnwick_deb(window tarnwick utils "updater for the firmware of telescope mounts"
  "It writes firmware into the motor controllers of a computerised telescope
mount, over the programming cable, and compares every word afterwards.
The window leads through four pages, with help for every message."
  "tarnwick-tools (= ${PROJECT_VERSION}), libcurl4, fonts-dejavu-core")
tarnwick_deb(tools tarnwick-tools utils "firmware of telescope mounts, from a terminal"
  "tarnwick-flash does the work of Tarnwick without a display. With it come the
library that speaks with the mount, and the tools of those who make
firmware packages and update sites."
  "libcurl4")
tarnwick_deb(mount tarnwick-mount utils "simulated telescope mount on a pseudo terminal"
  "It answers as the motor controllers of a telescope mount do, to try Tarnwick
without a telescope." "")

add_custom_target(debs
  COMMAND ${CMAKE_CPACK_COMMAND} -G DEB --config ${CMAKE_BINARY_DIR}/CPackConfig.cmake -B ${CMAKE_BINARY_DIR}
  DEPENDS tarnwick_program tarnwick_flash tarnwick_so qalinfo qalmake tarnwick_site tarnwick_mount
          debian_changelog ${packed}
  COMMENT "Packing the packages of a Debian"
  VERBATIM)

# The two that read packages alone run for a millisecond or two: loading libraries would be most of that.
file(CONFIGURE OUTPUT lintian-overrides CONTENT
  "tarnwick-tools: statically-linked-binary [usr/bin/qalinfo]\ntarnwick-tools: statically-linked-binary [usr/bin/qalmake]\n")
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/lintian-overrides RENAME tarnwick-tools
  DESTINATION share/lintian/overrides COMPONENT tools)
