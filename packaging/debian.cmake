# Run by CPack once the files are staged: what Debian's policy wants of a package besides.
if(NOT CPACK_GENERATOR STREQUAL DEB)
  return()
endif()
set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}${CPACK_INSTALL_PREFIX}/share)
set(doc ${share}/doc/zelvan)

file(REMOVE ${doc}/LICENSE)
configure_file(${CPACK_ZELVAN_SOURCE}/packaging/copyright ${doc}/copyright COPYONLY NO_SOURCE_PERMISSIONS)
configure_file(${CPACK_ZELVAN_SOURCE}/CHANGELOG.md ${doc}/NEWS COPYONLY NO_SOURCE_PERMISSIONS)

# The changelog of the package has the date of the release from that of the program.
file(STRINGS ${CPACK_ZELVAN_SOURCE}/CHANGELOG.md heading REGEX "^## ${CPACK_PACKAGE_VERSION} ")
string(REGEX MATCH "[0-9]+-[0-9]+-[0-9]+" day "${heading}")
execute_process(COMMAND date -u -R -d "${day} 12:00" OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
file(WRITE ${doc}/changelog
"zelvan (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * Release ${CPACK_PACKAGE_VERSION}; NEWS.gz tells what is new.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")

file(CHMOD ${doc}/changelog FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

file(GLOB compressed ${share}/man/man*/* ${doc}/changelog ${doc}/NEWS)
execute_process(COMMAND gzip -9n ${compressed} COMMAND_ERROR_IS_FATAL ANY)
