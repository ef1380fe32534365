# Compiler and linker flags of all targets.
if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "" FORCE)
endif()

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O2 -g")
    set(CMAKE_C_FLAGS_RELWITHDEBINFO "-O2 -g")
    set(CMAKE_ASM_FLAGS_RELWITHDEBINFO "")
    add_compile_options(-Wall -Wextra -Wshadow=local -fstack-protector-strong)
    # Links the runtime statically: hosts ship no DLLs but ours.
    add_link_options(-static -fstack-protector-strong)
    add_link_options(LINKER:--dynamicbase,--high-entropy-va,--nxcompat)
    # Reproducible builds: the same sources produce the same bytes in any folder.
    add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${CMAKE_BINARY_DIR}=build)
    add_compile_options(-fno-canonical-system-headers) # otherwise GCC uses the shorter of two paths to a header
    add_link_options(LINKER:--no-insert-timestamp)
    add_link_options(-T${CMAKE_CURRENT_LIST_DIR}/ConstructorLists.ld)
else()
    add_compile_options(/W4 /utf-8)
endif()

# Windows 7 is the oldest supported system.
add_compile_definitions(_WIN32_WINNT=0x0601 UNICODE _UNICODE NOMINMAX)

option(ORVEL_WARNINGS_AS_ERRORS "Treat compiler warnings as errors" OFF)
if(ORVEL_WARNINGS_AS_ERRORS)
    set(CMAKE_COMPILE_WARNING_AS_ERROR ON)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        add_compile_options(-Wconversion)
    endif()
endif()
