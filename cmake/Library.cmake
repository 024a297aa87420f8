# quarvis_library(<name> [<lower layer>...]): the sources of the current folder, compiled once for
# the static library <name> and for the shared one, <name>-shared. Each links its like of the layers
# below it.
function(quarvis_library name)
    file(GLOB sources CONFIGURE_DEPENDS *.cpp)
    add_library(${name}-objects OBJECT ${sources})
    add_library(${name} STATIC $<TARGET_OBJECTS:${name}-objects>)
    add_library(${name}-shared SHARED $<TARGET_OBJECTS:${name}-objects>)
    quarvis_target(${name}-objects)
    foreach(target IN ITEMS ${name}-objects ${name} ${name}-shared)
        target_include_directories(${target} PUBLIC
            $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
            $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
        target_compile_features(${target} PUBLIC cxx_std_20)
    endforeach()

    # Calls inside a library need not heed that a program may replace the function, so they cost the
    # same in code for shared libraries as in other code.
    set_target_properties(${name}-objects PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_compile_options(${name}-objects PRIVATE -fno-semantic-interposition)

    # The shared library exports what the public headers declare, each between a pair of pragmas.
    set_target_properties(${name}-objects PROPERTIES
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)

    # A minor version may change what programs were linked with.
    set_target_properties(${name}-shared PROPERTIES
        OUTPUT_NAME ${name}
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
        INSTALL_RPATH $ORIGIN)

    foreach(lower IN LISTS ARGN)
        target_link_libraries(${name} PUBLIC ${lower})
        target_link_libraries(${name}-shared PUBLIC ${lower}-shared)
    endforeach()
endfunction()
