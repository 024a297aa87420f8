# Targets of this project: the warnings they all are built with, and the check that keeps a lower
# layer from including a higher one.

add_custom_target(layers
    COMMAND ${CMAKE_COMMAND} -DROOT=${PROJECT_SOURCE_DIR}
            -P ${PROJECT_SOURCE_DIR}/cmake/CheckLayers.cmake
    COMMENT "Checking that no layer includes a higher one"
    VERBATIM)

# quarvis_target(<target>): every warning is an error (in a project that takes this one in, it stays
# a warning), and the layer check runs before it compiles.
function(quarvis_target target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    set_target_properties(${target} PROPERTIES COMPILE_WARNING_AS_ERROR ${PROJECT_IS_TOP_LEVEL})
    add_dependencies(${target} layers)
endfunction()
