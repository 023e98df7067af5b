# What "cmake --install" puts where, and the Debian package.

set(ZELVAN_SHARE ${CMAKE_INSTALL_DATADIR}/zelvan)
set(ZELVAN_COMPLETIONS ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)

# The program stands aside; the command is a script that tells it where its configuration is.
install(TARGETS zelvan RUNTIME DESTINATION lib/zelvan)
install(DIRECTORY data/matrices data/codons examples DESTINATION ${ZELVAN_SHARE})
install(FILES data/config/zelvan_alias.dat data/config/zelvan_gapdefs.dat DESTINATION ${ZELVAN_SHARE}/config)
install(FILES packaging/zelvan.bash DESTINATION ${ZELVAN_COMPLETIONS} RENAME zelvan)

# Commands written in Python find their package relative to themselves, wherever the prefix is moved to.
install(PROGRAMS filters/zelvan2tsv filters/zelvan2json filters/zelvan2msa filters/zelvan2a3m filters/zelvan2pssm
                 filters/zelvan2html
        DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY easy/zelvan_easy DESTINATION lib/zelvan/python PATTERN __pycache__ EXCLUDE)
install(FILES doc/zelvan_report.schema.json DESTINATION ${ZELVAN_SHARE})

# zelvan-easy looks for its package in ../lib/zelvan/python and for zelvan beside itself, wherever the tree is put.
install(PROGRAMS easy/zelvan-easy DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES packaging/zelvan-easy.bash DESTINATION ${ZELVAN_COMPLETIONS} RENAME zelvan-easy)

install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})

# The prefix is known only now when "cmake --install --prefix" sets it.
install(CODE "
  set(prefix \"\${CMAKE_INSTALL_PREFIX}\")
  set(staged \"\$ENV{DESTDIR}\${prefix}\")
  set(ZELVAN_DATA_DIR \"\${prefix}/${ZELVAN_SHARE}\")
  configure_file(\"${PROJECT_SOURCE_DIR}/data/config/zelvan_defaults.dat.in\"
                 \"\${staged}/${ZELVAN_SHARE}/config/zelvan_defaults.dat\" @ONLY)
  configure_file(\"${PROJECT_SOURCE_DIR}/packaging/zelvan.in\" \"\${staged}/${CMAKE_INSTALL_BINDIR}/zelvan\" @ONLY
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
  if(NOT DEFINED ENV{DESTDIR})
    message(STATUS \"The commands are in \${prefix}/${CMAKE_INSTALL_BINDIR}. Where PATH does not have that folder:\")
    message(STATUS \"  export PATH=\\\"\${prefix}/${CMAKE_INSTALL_BINDIR}:\\$PATH\\\"\")
  endif()
")

# cpack -G DEB
set(CPACK_PACKAGE_CONTACT "The ZELVAN developers <developers@zelvan.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "rigorous search of protein and DNA databases")
set(CPACK_SET_DESTDIR ON)  # so that the configuration names the paths of the installed package
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "python3 (>= 3.9), python3-typer, python3-rich, python3-dnaio, python3-jinja2, python3-zstandard, tantan")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "snakemake")
find_program(DPKG_SHLIBDEPS dpkg-shlibdeps)
mark_as_advanced(DPKG_SHLIBDEPS)
if(DPKG_SHLIBDEPS)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()
include(CPack)
