# The manual: chapters and pages in Markdown, the list of keys out of the program, pandoc for the rest. Without pandoc
# the Markdown itself, which is plain text, is installed.

add_executable(list_keys doc/list_keys.cpp)
target_link_libraries(list_keys PRIVATE zelvan_config)
zelvan_precompile(list_keys)

set(pages ${PROJECT_BINARY_DIR}/manual)
file(MAKE_DIRECTORY ${pages})
file(GLOB chapters CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/doc/manual/*.md)
file(GLOB commands CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/doc/commands/*.1.md)
set(configuration ${PROJECT_BINARY_DIR}/config)

add_custom_command(
  OUTPUT ${pages}/keys.md
  COMMAND list_keys ${configuration} ${ZELVAN_DATA_DIR} > ${pages}/keys.md
  DEPENDS list_keys ${configuration}/zelvan_alias.dat ${configuration}/zelvan_defaults.dat
  COMMENT "Listing the keys" VERBATIM)
# It follows the chapter about keys.
set(text ${chapters})
list(FIND text ${PROJECT_SOURCE_DIR}/doc/manual/60_keys.md at)
math(EXPR at "${at} + 1")
list(INSERT text ${at} ${pages}/keys.md)

find_program(PANDOC pandoc)
if(PANDOC)
  # zelvan_page(FILE TITLE SECTION HEADER SOURCES) - one man page.
  function(zelvan_page file title section header)
    string(TOUPPER ${title} title)
    add_custom_command(
      OUTPUT ${pages}/${file}
      COMMAND ${PANDOC} -s -f markdown-smart -t man --template ${PROJECT_SOURCE_DIR}/doc/man.template
              -L ${PROJECT_SOURCE_DIR}/doc/man.lua --preserve-tabs -V title=${title} -V section=${section}
              "-Vheader=${header}" "-Vfooter=ZELVAN ${PROJECT_VERSION}"
              -o ${pages}/${file} ${ARGN}
      DEPENDS ${ARGN} doc/man.lua doc/man.template
      VERBATIM)
    set(made ${made} ${pages}/${file} PARENT_SCOPE)
  endfunction()

  zelvan_page(zelvan_manual.7 zelvan_manual 7 "Manual of ZELVAN" ${text})
  install(FILES ${pages}/zelvan_manual.7 DESTINATION ${CMAKE_INSTALL_MANDIR}/man7)
  foreach(source IN LISTS commands)
    get_filename_component(name ${source} NAME_WE)
    zelvan_page(${name}.1 ${name} 1 "User Commands" ${source})
    install(FILES ${pages}/${name}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  endforeach()
  file(WRITE ${pages}/zelvan2a3m.1 ".so man1/zelvan2msa.1\n")
  install(FILES ${pages}/zelvan2a3m.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

  add_custom_command(
    OUTPUT ${pages}/zelvan_manual.html
    COMMAND ${PANDOC} -s -f markdown-smart -t html5 --toc --toc-depth=1 --preserve-tabs
            -M lang=en -M "title=Manual of ZELVAN ${PROJECT_VERSION}" -H ${PROJECT_SOURCE_DIR}/doc/style.html
            -o ${pages}/zelvan_manual.html ${text}
    DEPENDS ${text} doc/style.html
    VERBATIM)
  install(FILES ${pages}/zelvan_manual.html DESTINATION ${CMAKE_INSTALL_DOCDIR})
  add_custom_target(manual ALL DEPENDS ${made} ${pages}/zelvan_manual.html)
else()
  message(STATUS "Without pandoc there are no man pages: the manual will be installed as Markdown text")
  add_custom_target(manual ALL DEPENDS ${pages}/keys.md)
  install(FILES ${text} ${commands} DESTINATION ${CMAKE_INSTALL_DOCDIR})
endif()
