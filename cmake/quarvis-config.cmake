# find_package(quarvis) gives the targets quarvis::moxtel, the support library, and quarvis::rule,
# the rule model, which links it: the shared libraries where BUILD_SHARED_LIBS is on, otherwise the
# static ones.

if(BUILD_SHARED_LIBS)
    include(${CMAKE_CURRENT_LIST_DIR}/quarvis-shared.cmake)
else()
    include(${CMAKE_CURRENT_LIST_DIR}/quarvis-static.cmake)
endif()
