# The fuzz targets: name|source|libraries (comma-separated). The name is also the folder of
# its saved inputs, tests/fuzz/corpus/<name>/. fuzz/CMakeLists.txt builds each as a libFuzzer
# program (clang); tests/fuzz/CMakeLists.txt builds each with the replay main as a CTest test.
set(MVGOZ_FUZZ_TARGETS
    "keyvalue_reader|KeyValueReaderFuzzer.cpp|mvgoz_platform"
    "keyvalue_writer|KeyValueWriterFuzzer.cpp|mvgoz_platform"
    "objectlist_send|SendObjectListFuzzer.cpp|mvgoz_core"
    "objectlist_receive|ReceiveObjectListFuzzer.cpp|mvgoz_core"
    "texture_sizes|TextureSizeFuzzer.cpp|mvgoz_core"
    "scene|SceneFuzzer.cpp|mvgoz_host_scene"
    "script|ScriptFuzzer.cpp|mvgoz_host_run"
    "standin|StandInFileFuzzer.cpp|mvgoz_gozfile"
)
set(MVGOZ_FUZZ_SOURCE_DIR ${CMAKE_CURRENT_LIST_DIR})

# mvgoz_add_fuzz_programs(<prefix> [extra sources...]): one program <prefix><name> for each
# target, from the target's source, FuzzSupport.cpp and the extra sources (built once); the
# list MVGOZ_FUZZ_PROGRAMS receives the program names and MVGOZ_FUZZ_NAMES the target names.
macro(mvgoz_add_fuzz_programs prefix)
    set(MVGOZ_FUZZ_PROGRAMS)
    set(MVGOZ_FUZZ_NAMES)
    add_library(${prefix}support OBJECT
        ${MVGOZ_FUZZ_SOURCE_DIR}/FuzzSupport.h ${MVGOZ_FUZZ_SOURCE_DIR}/FuzzSupport.cpp ${ARGN})
    foreach(entry ${MVGOZ_FUZZ_TARGETS})
        string(REPLACE "|" ";" fields "${entry}")
        list(GET fields 0 fuzz_name)
        list(GET fields 1 fuzz_source)
        list(GET fields 2 fuzz_libs)
        string(REPLACE "," ";" fuzz_libs "${fuzz_libs}")
        add_executable(${prefix}${fuzz_name} ${MVGOZ_FUZZ_SOURCE_DIR}/${fuzz_source})
        target_include_directories(${prefix}${fuzz_name} PRIVATE ${MVGOZ_FUZZ_SOURCE_DIR})
        target_link_libraries(${prefix}${fuzz_name} PRIVATE ${prefix}support ${fuzz_libs})
        list(APPEND MVGOZ_FUZZ_PROGRAMS ${prefix}${fuzz_name})
        list(APPEND MVGOZ_FUZZ_NAMES ${fuzz_name})
    endforeach()
endmacro()
