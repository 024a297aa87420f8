# cmake -DROOT=<source tree> -P CheckLayers.cmake
#
# Fails, naming file and line, when a layer includes a header of a higher layer. The support library
# may include nothing of the others, the rule model nothing of the engine or the tool, and the
# engine nothing but the standard library. (The folder of the tool is only on its own include path,
# so no other layer can include its headers by their bare names.)

set(VIOLATIONS "")

function(check_layer layer forbidden)
    foreach(directory IN LISTS ARGN)
        file(GLOB_RECURSE sources ${ROOT}/${directory}/*.hpp ${ROOT}/${directory}/*.cpp)
        if(NOT layer STREQUAL mining)
            list(FILTER sources EXCLUDE REGEX "/include/quarvis/mining/")
        endif()
        foreach(source IN LISTS sources)
            file(STRINGS ${source} includes REGEX "^[ \t]*#[ \t]*include[ \t]*[<\"]")
            foreach(line IN LISTS includes)
                string(REGEX REPLACE "^[^<\"]*[<\"]([^>\"]*).*$" "\\1" header "${line}")
                if(header MATCHES "${forbidden}")
                    file(RELATIVE_PATH name ${ROOT} ${source})
                    list(APPEND VIOLATIONS "${name}: ${layer} must not include ${header}")
                endif()
            endforeach()
        endforeach()
    endforeach()
    set(VIOLATIONS "${VIOLATIONS}" PARENT_SCOPE)
endfunction()

check_layer(moxtel "quarvis" include/moxtel src/libmoxtel)
check_layer(quarvis "quarvis-rules|quarvis/mining" include/quarvis src/libquarvis)
check_layer(mining "quarvis-rules|moxtel|quarvis/[^m]|quarvis/m[^i]" include/quarvis/mining
            src/libmining)

if(VIOLATIONS)
    list(JOIN VIOLATIONS "\n  " text)
    message(FATAL_ERROR "An include goes up a layer:\n  ${text}")
endif()
