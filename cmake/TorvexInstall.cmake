# `cmake --install BUILD --prefix DIR`: programs, the Python package, examples and documentation.

include(GNUInstallDirs)

install(TARGETS ${torvex_programs} RUNTIME)
if(torvex_variant_programs)
    install(TARGETS ${torvex_variant_programs} RUNTIME DESTINATION lib/torvex)
endif()
install(PROGRAMS ${PROJECT_BINARY_DIR}/installed/torvex-study DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY python/torvex DESTINATION lib/python3/dist-packages
    FILES_MATCHING PATTERN "*.py" PATTERN "py.typed" PATTERN "*.csv" PATTERN "*.j2")
install(DIRECTORY examples/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
install(DIRECTORY python/examples/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples/python
    FILES_MATCHING PATTERN "*.py")
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN "*.md" PATTERN "*.png")
install(FILES README.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
