# `cmake --install BUILD --prefix DIR`: programs, the Python package, examples and documentation.

include(GNUInstallDirs)

install(TARGETS torvex torvex-prep RUNTIME)
install(DIRECTORY python/torvex DESTINATION lib/python3/dist-packages
    FILES_MATCHING PATTERN "*.py" PATTERN "py.typed")
install(DIRECTORY examples/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
install(DIRECTORY python/examples/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples/python
    FILES_MATCHING PATTERN "*.py")
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN "*.md" PATTERN "*.png")
install(FILES README.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
