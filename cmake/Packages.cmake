# The packages of Debian that `cpack --preset package` makes of the components, into build/package:
#
#   quarvis-rules    the tool, its manual pages and completions
#   libquarvis0.1    the three shared libraries; the name has the version in their sonames, so that
#                    the libraries of two minor versions can be installed side by side
#   libquarvis-dev   headers, static libraries, and the files for CMake and pkg-config
#   quarvis-doc      documentation and examples
#
# tools/check-packages builds and tests them.

set(soversion ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(debian_version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})

set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGE_CONTACT "The quarvis-rules authors <maintainers@quarvis-rules.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL tool libraries development documentation)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE quarvis-rules)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

set(about "A history is all that is known of one customer, patient or case: what was
seen at which points in time. A rule \"A => S\" tells in how many histories S
newly follows A, within a window of time if wanted.")

# quarvis_package(<component> <name> <section> <summary> <description>)
macro(quarvis_package component name section summary description)
    string(TOUPPER ${component} upper)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${summary}\n${about}\n\n${description}")
endmacro()

quarvis_package(tool quarvis-rules science
    "miner of association rules in transaction histories"
    "This package has the command quarvis-rules. It reads a table of entities,
times and items, and writes the rules with six measures of interest, and the
frequent item sets.")
set(CPACK_DEBIAN_TOOL_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOL_PACKAGE_SUGGESTS "quarvis-doc")

quarvis_package(libraries libquarvis${soversion} libs
    "mining of association rules in histories - shared libraries"
    "This package has the shared libraries: moxtel (containers, strings, streams,
tables), quarvis (rules, histories and their files) and quarvis-mining (the
engine).")
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_SHLIBDEPS ON)
# What a package whose programs are linked with the libraries has to depend on.
set(shlibs ${PROJECT_BINARY_DIR}/debian/shlibs)
set(shlibs_text "")
foreach(library IN ITEMS moxtel quarvis quarvis-mining)
    string(APPEND shlibs_text
           "lib${library} ${soversion} libquarvis${soversion} (>= ${PROJECT_VERSION})\n")
endforeach()
file(CONFIGURE OUTPUT ${shlibs} CONTENT "${shlibs_text}")
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_CONTROL_EXTRA
    ${shlibs} ${PROJECT_SOURCE_DIR}/packaging/debian/triggers)

quarvis_package(development libquarvis-dev libdevel
    "mining of association rules in histories - development files"
    "This package has the headers and static libraries of moxtel, quarvis and
quarvis-mining, and what CMake and pkg-config need to find them.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libquarvis${soversion} (= ${debian_version})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "quarvis-doc")

quarvis_package(documentation quarvis-doc doc
    "mining of association rules in histories - documentation"
    "This package has the documentation of the command, the libraries and the
Python package, with examples.")
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)

# Adds what Debian asks for besides what is installed.
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/debian/finish.cmake)
set(CPACK_QUARVIS_SOURCE_DIR ${PROJECT_SOURCE_DIR})
include(CPack)
