# What every target of the project shares, and one function per kind of target.

add_library(velmora_options INTERFACE)
target_compile_options(velmora_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Werror)
target_compile_definitions(velmora_options INTERFACE QT_NO_KEYWORDS QT_NO_FOREACH QT_NO_CAST_FROM_BYTEARRAY)
target_include_directories(velmora_options INTERFACE ${PROJECT_SOURCE_DIR}/Sources)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # g++ 12 reports false positives in its own coroutine frames and in inlined string code.
    target_compile_options(velmora_options INTERFACE
        -Wno-maybe-uninitialized -Wno-restrict -Wno-stringop-overflow -Wno-array-bounds -Wno-dangling-pointer)
else()
    # clang reports what the standard library's own std::stable_sort uses; g++ still reports ours.
    target_compile_options(velmora_options INTERFACE -Wno-deprecated-declarations)
endif()
if(VELMORA_SANITIZE)
    target_compile_options(velmora_options INTERFACE
        -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer
        -g1)  # lines are enough for a report, and the build is shorter
    target_link_options(velmora_options INTERFACE -fsanitize=address,undefined)
endif()

# velmora_library(<Name> SOURCES <files...> [DEPENDS <targets...>])
# One static library per folder; DEPENDS are public.
function(velmora_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_link_libraries(${name} PUBLIC velmora_options Qt6::Core ${ARG_DEPENDS})
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
endfunction()

# velmora_test(<Name> LABEL <label> SOURCES <files...> [DEPENDS <targets...>] [TIMEOUT <seconds>] [SERIAL])
# One GoogleTest program; every test case becomes one CTest test with the label. SERIAL keeps its
# tests from running beside others.
function(velmora_test name)
    cmake_parse_arguments(ARG "SERIAL" "LABEL;TIMEOUT" "SOURCES;DEPENDS" ${ARGN})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 60)
    endif()
    if(ARG_SERIAL)
        set(serial RUN_SERIAL ON)
    endif()
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE VelmoraTestSupport ${ARG_DEPENDS} GTest::gmock)
    set_target_properties(${name} PROPERTIES AUTOMOC ON RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    if(NOT TARGET ${ARG_LABEL}-tests)
        add_custom_target(${ARG_LABEL}-tests)  # to build only what a label's tests need
    endif()
    add_dependencies(${ARG_LABEL}-tests ${name})
    gtest_discover_tests(${name}
        TEST_PREFIX ${name}.
        DISCOVERY_TIMEOUT 60
        PROPERTIES LABELS ${ARG_LABEL} TIMEOUT ${ARG_TIMEOUT} ${serial})
endfunction()
