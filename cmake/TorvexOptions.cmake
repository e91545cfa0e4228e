# Language, warnings and code generation, chosen once for every target.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release)
endif()

find_package(OpenMP REQUIRED)

add_library(torvex_options INTERFACE)
target_link_libraries(torvex_options INTERFACE OpenMP::OpenMP_CXX)
target_compile_options(torvex_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wdouble-promotion -Wshadow
    -Wold-style-cast -Wcast-qual -Wcast-align -Wformat=2 -Wnon-virtual-dtor -Woverloaded-virtual
    -Wduplicated-cond -Wlogical-op
    # g++ 12 sees overlapping copies inside std::string that are not there (its bug 105329).
    -Wno-restrict
    # Vectors that the machine has no registers for are passed within one program only.
    -Wno-psabi)

# No fused multiply-add and no reassociation: the fields are the same bits on every machine and for
# any number of threads. errno and floating-point traps are not used, and giving them up lets the
# compiler vectorise square roots and selections without changing a value.
target_compile_options(torvex_options INTERFACE -ffp-contract=off -fno-math-errno)
target_compile_options(torvex_options INTERFACE $<$<CONFIG:Release>:-fno-trapping-math>)

if(TORVEX_NATIVE)
    target_compile_options(torvex_options INTERFACE -march=native)
endif()
if(TORVEX_CHECKS)
    target_compile_definitions(torvex_options INTERFACE TORVEX_CHECKS=1 _GLIBCXX_ASSERTIONS)
endif()

add_library(torvex_sanitizers INTERFACE)
target_compile_options(torvex_sanitizers INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer -g)
target_link_options(torvex_sanitizers INTERFACE -fsanitize=address,undefined)
if(TORVEX_SANITIZE)
    target_link_libraries(torvex_options INTERFACE torvex_sanitizers)
    # The sanitizers' own instrumentation confuses this one warning of g++ 12.
    target_compile_options(torvex_options INTERFACE -Wno-maybe-uninitialized)
endif()
