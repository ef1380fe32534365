# Shared by the package's find_package files. The caller sets _orvel to the name that was passed to find_package.

get_filename_component(_orvel_root "${CMAKE_CURRENT_LIST_DIR}/../.." ABSOLUTE)

macro(_orvel_refuse reason)
    set(${_orvel}_FOUND FALSE)
    set(${_orvel}_NOT_FOUND_MESSAGE "${reason}")
endmacro()

# _orvel_check(PROBLEM TARGET FILE...): sets PROBLEM to the reason why TARGET cannot be made of these files, or to "".
function(_orvel_check problem target)
    set(${problem} "" PARENT_SCOPE)
    foreach(file IN LISTS ARGN)
        if(NOT EXISTS "${_orvel_root}/${file}")
            set(${problem} "The package is incomplete: \"${_orvel_root}/${file}\" is missing" PARENT_SCOPE)
            return()
        endif()
    endforeach()
    if(TARGET ${target})
        get_target_property(location ${target} IMPORTED_LOCATION)
        if(NOT location STREQUAL "${_orvel_root}/${ARGV2}")
            set(${problem} "${target} is \"${location}\" here already, of another copy of the package" PARENT_SCOPE)
        endif()
    endif()
endfunction()

# Not GLOBAL, because two folders of a project may use two copies of the package.
function(_orvel_add_library target dll)
    if(NOT TARGET ${target})
        add_library(${target} SHARED IMPORTED)
        set_target_properties(${target} PROPERTIES IMPORTED_LOCATION "${_orvel_root}/${dll}" ${ARGN})
    endif()
endfunction()

# The import library FOLDER/NAME for the compiler in use.
function(_orvel_import_library variable folder name)
    if(MINGW)
        set(${variable} "${folder}/lib${name}.dll.a" PARENT_SCOPE)
    else()
        set(${variable} "${folder}/${name}.lib" PARENT_SCOPE)
    endif()
endfunction()

set(${_orvel}_FOUND TRUE)
if(NOT WIN32 OR NOT CMAKE_SIZEOF_VOID_P EQUAL 8)
    _orvel_refuse("The library is for 64-bit Windows only")
endif()
