# What the archive and the packages of a Debian have of their own. CPack reads this for each of its generators.
if(CPACK_GENERATOR STREQUAL "DEB")
  list(TRANSFORM CPACK_INSTALL_CMAKE_PROJECTS REPLACE "^portable$" ALL)
  set(CPACK_COMPONENTS_ALL window tools mount)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
endif()
