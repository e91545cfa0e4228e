# The programs once more for x86-64-v3, the third level of the instruction set, beside those that run
# on any machine: `torvex` and `torvex-prep` start them where the processor has that level
# (run/processor_variant). Everything is compiled a second time, so only a build that is to be
# carried to other machines asks for it.

set(torvex_programs torvex torvex-prep)
set(torvex_variant_programs)
set(level x86-64-v3)

# torvex_copy_library(LIBRARY): LIBRARY-x86-64-v3, made of the same sources.
function(torvex_copy_library library)
    get_target_property(sources ${library} SOURCES)
    get_target_property(folder ${library} SOURCE_DIR)
    foreach(source ${sources})
        cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY ${folder})
        list(APPEND copied ${source})
    endforeach()
    add_library(${library}-${level} STATIC ${copied})
    target_compile_options(${library}-${level} PUBLIC -march=${level})
endfunction()

if(TORVEX_VARIANTS AND CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
    foreach(library torvex_core torvex_shape torvex_conversion torvex_prep)
        torvex_copy_library(${library})
    endforeach()
    target_include_directories(torvex_core-${level} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(torvex_core-${level} PUBLIC torvex_options)
    target_include_directories(torvex_shape-${level} SYSTEM PRIVATE ${SHAPELIB_INCLUDE_DIR})
    target_link_libraries(torvex_shape-${level}
        PUBLIC torvex_core-${level} PRIVATE ${SHAPELIB_LIBRARY})
    target_link_libraries(torvex_conversion-${level} PUBLIC torvex_shape-${level})
    target_link_libraries(torvex_prep-${level} PUBLIC torvex_conversion-${level})

    set(torvex_variant_programs torvex-${level} torvex-prep-${level})
    add_executable(torvex-${level} src/run/main.cpp)
    target_link_libraries(torvex-${level} PRIVATE torvex_core-${level})
    add_executable(torvex-prep-${level} src/prep/main.cpp)
    target_link_libraries(torvex-prep-${level} PRIVATE torvex_prep-${level})
endif()

# What the programs are told of it.
foreach(program ${torvex_programs} ${torvex_variant_programs})
    if(torvex_variant_programs AND program IN_LIST torvex_programs)
        target_compile_definitions(${program} PRIVATE TORVEX_VARIANTS=beside_the_program)
    else()
        target_compile_definitions(${program} PRIVATE TORVEX_VARIANTS=none)
    endif()
endforeach()
