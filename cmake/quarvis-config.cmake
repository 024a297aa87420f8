# find_package(quarvis) defines the targets quarvis::moxtel, the support library; quarvis::rule, the
# rule model, which links the support library; and quarvis::mining, the mining engine. They are the
# shared libraries if BUILD_SHARED_LIBS is on, otherwise the static ones.

include(CMakeFindDependencyMacro)
find_dependency(Threads)

if(BUILD_SHARED_LIBS)
    include(${CMAKE_CURRENT_LIST_DIR}/quarvis-shared.cmake)
else()
    include(${CMAKE_CURRENT_LIST_DIR}/quarvis-static.cmake)
endif()
