include(GoogleTest)

# mvgoz_add_gtest(<name> SOURCES <files...> LIBS <targets...>)
# One GoogleTest program with the shared Qt-aware main; each test case becomes a CTest test.
function(mvgoz_add_gtest name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE mvgoz_testmain ${ARG_LIBS})
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
    gtest_discover_tests(${name}
        DISCOVERY_TIMEOUT 60
        PROPERTIES TIMEOUT 120 ENVIRONMENT "QT_QPA_PLATFORM=offscreen")
endfunction()
