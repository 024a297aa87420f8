# What makes a fault harder to exploit, in optimised builds: arrays on the stack are guarded, calls of
# the C library check the sizes that the compiler knows, and what the loader has resolved is read-only.
# Programs are loaded at any address (see src/quarvis-rules/CMakeLists.txt). tools/check-hardening
# holds the built files to all of it.

option(QUARVIS_HARDENING "Harden optimised builds" ${PROJECT_IS_TOP_LEVEL})

if(QUARVIS_HARDENING)
    set(optimised $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
    # Some compilers define the macro by themselves, with another value.
    add_compile_options($<${optimised}:-fstack-protector-strong>
                        $<${optimised}:-U_FORTIFY_SOURCE> $<${optimised}:-D_FORTIFY_SOURCE=2>)
    add_link_options($<${optimised}:LINKER:-z,relro,-z,now>)
endif()
