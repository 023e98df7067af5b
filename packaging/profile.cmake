# Run by CPack once the files are staged: login shells of a machine with the package know the installation.
file(WRITE "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/etc/profile.d/zelvan.sh"
     "if [ -r ${CPACK_INSTALL_PREFIX}/share/zelvan/zelvan-env.sh ]; then . ${CPACK_INSTALL_PREFIX}/share/zelvan/zelvan-env.sh; fi\n")
