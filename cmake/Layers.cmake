# Settings of all targets: the warnings, and the check that no layer includes a higher one.

add_custom_target(layers
    COMMAND ${CMAKE_COMMAND} -DROOT=${PROJECT_SOURCE_DIR}
            -P ${PROJECT_SOURCE_DIR}/cmake/CheckLayers.cmake
    COMMENT "Checking that no layer includes a higher one"
    VERBATIM)

# quarvis_target(<target>): turns warnings into errors (but not in a project that includes this one)
# and runs the layer check before the target compiles.
function(quarvis_target target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    set_target_properties(${target} PROPERTIES COMPILE_WARNING_AS_ERROR ${PROJECT_IS_TOP_LEVEL})
    add_dependencies(${target} layers)
endfunction()
