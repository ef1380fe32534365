# orvel_import_library(TARGET DEFINITION [DELAYED] [DLL NAME] [FROM TARGET]): a library to link with, made from the names of a
# module-definition file. DELAYED: the DLL is loaded at the first call, so that the program starts without it. DLL: its name,
# where the file does not tell it. FROM: the target whose build writes the file.
function(orvel_import_library target definition)
    cmake_parse_arguments(arg "DELAYED" "DLL;FROM" "" ${ARGN})
    set(library ${CMAKE_BINARY_DIR}/lib/lib${target}.a)
    if(arg_DELAYED)
        set(kind --output-delaylib)
    else()
        set(kind --output-lib)
    endif()
    if(arg_DLL)
        set(name --dllname ${arg_DLL})
    endif()
    add_custom_command(OUTPUT ${library}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/lib
        COMMAND ${CMAKE_DLLTOOL} --input-def ${definition} ${name} ${kind} ${library}
        DEPENDS ${definition} ${arg_FROM} VERBATIM)
    add_custom_target(${target}-file DEPENDS ${library})
    add_library(${target} INTERFACE)
    add_dependencies(${target} ${target}-file)
    target_link_libraries(${target} INTERFACE ${library})
endfunction()
