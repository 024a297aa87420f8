# quarvis_library(<name> [<lower layer>...]): compiles the sources of the current folder once, for
# the static library <name> and the shared library <name>-shared. The static one links the static
# libraries of the lower layers, the shared one the shared libraries.
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

    # Calls inside a library need not allow for a program that replaces the function. So they cost
    # no more in code for shared libraries than in other code.
    set_target_properties(${name}-objects PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_compile_options(${name}-objects PRIVATE -fno-semantic-interposition)

    # The shared library exports only what the public headers declare between a pair of pragmas.
    set_target_properties(${name}-objects PROPERTIES
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)

    # A new minor version may be incompatible with programs linked before.
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
