# Targets of this project: the warnings they all are built with, and the check that keeps a lower
# layer from including a higher one.

add_custom_target(layers
    COMMAND ${CMAKE_COMMAND} -DROOT=${PROJECT_SOURCE_DIR}
            -P ${PROJECT_SOURCE_DIR}/cmake/CheckLayers.cmake
    COMMENT "Checking that no layer includes a higher one"
    VERBATIM)

# quarvis_target(<target>): every warning is an error, and the layer check runs before it compiles.
function(quarvis_target target)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
    add_dependencies(${target} layers)
endfunction()
