# orvel_import_library(TARGET DEFINITION [DELAYED] [DLL NAME] [FROM TARGET]): a library to link with, made from the names of a
# module-definition file. DELAYED: the DLL is loaded at the first call, so that the program starts without it. DLL: its name,
# where the file does not tell it. FROM: the target whose build writes the file.
function(orvel_import_library target definition)
    cmake_parse_arguments(arg "DELAYED" "DLL;FROM" "" ${ARGN})
    add_library(${target} INTERFACE)
    if(MSVC AND arg_DELAYED)
        # MSVC's linker delays any import library.
        target_link_libraries(${target} INTERFACE ${arg_FROM} delayimp)
        target_link_options(${target} INTERFACE /DELAYLOAD:${arg_DLL})
        return()
    endif()
    if(MSVC)
        set(library ${CMAKE_BINARY_DIR}/lib/${target}.lib)
        set(command ${CMAKE_AR} /nologo /def:${definition} /machine:x64 /out:${library})
    else()
        set(library ${CMAKE_BINARY_DIR}/lib/lib${target}.a)
        # Its own temporary names would be others in every build, and end up in the symbols.
        string(MAKE_C_IDENTIFIER ${target} prefix)
        set(command ${CMAKE_DLLTOOL} --input-def ${definition} --temp-prefix ${prefix})
        if(arg_DLL)
            list(APPEND command --dllname ${arg_DLL})
        endif()
        if(arg_DELAYED)
            list(APPEND command --output-delaylib lib${target}.a)
        else()
            list(APPEND command --output-lib lib${target}.a)
        endif()
    endif()
    # In its own folder: the path that the tool is given ends up in the symbols too.
    file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
    add_custom_command(OUTPUT ${library} COMMAND ${command} WORKING_DIRECTORY ${CMAKE_BINARY_DIR}/lib
        DEPENDS ${definition} ${arg_FROM} VERBATIM)
    add_custom_target(${target}-file DEPENDS ${library})
    add_dependencies(${target} ${target}-file)
    target_link_libraries(${target} INTERFACE ${library})
endfunction()
