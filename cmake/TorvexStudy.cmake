# build/bin/torvex-study: the script in python/, told where its package stands.

set(TORVEX_PACKAGE_FOLDER ${PROJECT_SOURCE_DIR}/python)
configure_file(${PROJECT_SOURCE_DIR}/python/torvex-study.in
    ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/torvex-study @ONLY
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
        WORLD_READ WORLD_EXECUTE)

# The installed one finds the installed package from its own place.
set(TORVEX_PACKAGE_FOLDER ../lib/python3/dist-packages)
configure_file(${PROJECT_SOURCE_DIR}/python/torvex-study.in
    ${PROJECT_BINARY_DIR}/installed/torvex-study @ONLY)
