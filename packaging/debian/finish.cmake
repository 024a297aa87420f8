# Run by CPack on the files of all packages before it packs them: compresses the manual pages, and
# gives each package its copyright and its changelogs.

# Copies a file to a name.
function(copy from to)
    configure_file(${from} ${to} COPYONLY
        FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endfunction()

# Replaces a file by its compressed form, which has neither its name nor a time in it.
function(compress file)
    execute_process(COMMAND gzip -9nf ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

set(source ${CPACK_QUARVIS_SOURCE_DIR})
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    set(share ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share)
    file(GLOB pages ${share}/man/man?/*.[1-9])
    foreach(page IN LISTS pages)
        compress(${page})
    endforeach()

    string(TOUPPER ${component} upper)
    set(docs ${share}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
    copy(${source}/packaging/debian/copyright ${docs}/copyright)
    copy(${source}/packaging/debian/changelog ${docs}/changelog.Debian)
    compress(${docs}/changelog.Debian)
    copy(${source}/CHANGELOG.md ${docs}/changelog)
    compress(${docs}/changelog)
endforeach()
