# orvel_late_binding(TARGET DLL): a library to link with. Its functions are bound when the program calls BindLate, after it has
# loaded the DLL itself. The program therefore starts without the DLL, and can report what is missing.
function(orvel_late_binding target dll)
    add_library(${target} INTERFACE)
    if(MSVC)
        target_link_libraries(${target} INTERFACE ${dll} delayimp)
        target_link_options(${target} INTERFACE /DELAYLOAD:$<TARGET_FILE_NAME:${dll}>)
        return()
    endif()
    set(pointers ${CMAKE_CURRENT_BINARY_DIR}/${target}.s)
    set(script ${PROJECT_SOURCE_DIR}/cmake/make-late-binding.sh)
    add_custom_command(OUTPUT ${pointers} COMMAND ${script} ${CMAKE_BINARY_DIR}/${dll}.def ${pointers}
        DEPENDS ${script} ${CMAKE_BINARY_DIR}/${dll}.def ${dll} VERBATIM)
    add_library(${target}-pointers OBJECT ${pointers})
    target_link_libraries(${target} INTERFACE $<TARGET_OBJECTS:${target}-pointers>)
    add_dependencies(${target} ${target}-pointers)
endfunction()
