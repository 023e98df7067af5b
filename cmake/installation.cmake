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
                 \"\${staged}/${ZELVAN_SHARE}/config/zelvan_defaults.dat\" @ONLY NO_SOURCE_PERMISSIONS)
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
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Every database sequence is compared with the query by Smith-Waterman, without
heuristics, and every hit has an E-value from extreme-value statistics that are
fitted to the scores of the very search. Significant hits become a profile, and
the search goes on with it. DNA is searched through its reading frames, with
frame shifts.
.
The command zelvan-easy takes any number of queries and runs the search program
for each; others turn reports into tables, alignments, profiles and web pages.")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)  # needs dpkg-dev and file
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "python3 (>= 3.9), python3-click, python3-dnaio, python3-jinja2, python3-markupsafe, python3-rich, python3-typer, python3-zstandard")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "less, man-db, tantan")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "ncbi-blast+, snakemake, www-browser")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/debian.cmake)
set(CPACK_ZELVAN_SOURCE ${PROJECT_SOURCE_DIR})  # for that script
include(CPack)
