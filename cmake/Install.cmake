# Installs the tool with its manual pages and completions, the headers, the static and shared libraries,
# a CMake package, pkg-config files, the documentation and the examples. No installed file names the
# prefix, so it may be moved. The components are those of the packages (see Packages.cmake).

include(CMakePackageConfigHelpers)

set(QUARVIS_ZSH_COMPLETIONS_DIR ${CMAKE_INSTALL_DATADIR}/zsh/site-functions
    CACHE STRING "Where the completions for zsh are installed")

install(TARGETS quarvis-rules COMPONENT tool)
install(FILES docs/man/quarvis-rules.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
install(FILES docs/man/quarvis-rules.5 DESTINATION ${CMAKE_INSTALL_MANDIR}/man5 COMPONENT tool)
install(FILES completions/quarvis-rules.bash RENAME quarvis-rules
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tool)
install(FILES completions/_quarvis-rules DESTINATION ${QUARVIS_ZSH_COMPLETIONS_DIR} COMPONENT tool)
install(FILES completions/quarvis-rules.fish
        DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT tool)

# The pages keep the folders that their links name.
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation
        FILES_MATCHING PATTERN *.md PATTERN *.png PATTERN *.cpp PATTERN *.out
        PATTERN api EXCLUDE PATTERN man EXCLUDE)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)

install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
        FILES_MATCHING PATTERN *.hpp)

# The package has the same three targets in two export sets, one for each kind of library.
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/quarvis)
set_target_properties(moxtel moxtel-shared PROPERTIES EXPORT_NAME moxtel)
set_target_properties(quarvis quarvis-shared PROPERTIES EXPORT_NAME rule)
set_target_properties(quarvis-mining quarvis-mining-shared PROPERTIES EXPORT_NAME mining)
install(TARGETS moxtel quarvis quarvis-mining EXPORT quarvis-static COMPONENT development)
install(TARGETS moxtel-shared quarvis-shared quarvis-mining-shared EXPORT quarvis-shared
        LIBRARY COMPONENT libraries NAMELINK_COMPONENT development)
foreach(kind IN ITEMS static shared)
    install(EXPORT quarvis-${kind} NAMESPACE quarvis:: DESTINATION ${package_dir}
            COMPONENT development)
endforeach()

write_basic_package_version_file(${PROJECT_BINARY_DIR}/quarvis-config-version.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES cmake/quarvis-config.cmake ${PROJECT_BINARY_DIR}/quarvis-config-version.cmake
        DESTINATION ${package_dir} COMPONENT development)

# quarvis_pkgconfig(<name> <description> <required packages> <options for static libraries>)
function(quarvis_pkgconfig name description requires libs_private)
    set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
    file(RELATIVE_PATH prefix_from_pkgconfig /${pkgconfig_dir} /)
    configure_file(cmake/library.pc.in ${name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${pkgconfig_dir}
            COMPONENT development)
endfunction()

quarvis_pkgconfig(moxtel "Containers, managed memory, strings, streams and tables" "" "")
quarvis_pkgconfig(quarvis "Item sets, transaction histories and association rules"
                  "moxtel = ${PROJECT_VERSION}" "")
quarvis_pkgconfig(quarvis-mining "Mining of item sets and association rules" "" -pthread)
