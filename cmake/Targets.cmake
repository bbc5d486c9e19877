# What every target of ours has in common: warnings as errors, sanitizers, library look-up.

find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)

# Libraries by pkg-config name, as imported targets PkgConfig::<name> whose headers count as system
# headers: the warnings below are for our own code.
function(need_package target)
  if(NOT TARGET PkgConfig::${target})
    pkg_check_modules(${target} REQUIRED IMPORTED_TARGET GLOBAL ${ARGN})
    # Some of EFL's .pc files name folders that Debian does not ship; CMake takes that for an error.
    get_target_property(folders PkgConfig::${target} INTERFACE_INCLUDE_DIRECTORIES)
    set(present "")
    foreach(folder IN LISTS folders)
      if(EXISTS ${folder})
        list(APPEND present ${folder})
      endif()
    endforeach()
    set_target_properties(PkgConfig::${target} PROPERTIES
      INTERFACE_INCLUDE_DIRECTORIES "${present}")
  endif()
endfunction()

need_package(efl elementary ecore-evas ecore-input ecore-wl2 efreet)

# Another compiler, a set's or the one for fuzzing, may warn of what ours does not, and that must not be
# in its way.
add_library(project_flags INTERFACE)
target_compile_options(project_flags INTERFACE
  -Wall -Wextra -Wshadow -Wredundant-decls -Wconversion -Wno-sign-conversion -Wno-psabi
  $<$<AND:$<STREQUAL:${PLATFORM},linux>,$<CXX_COMPILER_ID:GNU>>:-Werror> -fno-omit-frame-pointer)
if(SANITIZE STREQUAL "address")
  target_compile_options(project_flags INTERFACE -fsanitize=address,undefined
    -fno-sanitize-recover=undefined)
  target_link_options(project_flags INTERFACE -fsanitize=address,undefined)
elseif(SANITIZE STREQUAL "thread")
  target_compile_options(project_flags INTERFACE -fsanitize=thread)
  target_link_options(project_flags INTERFACE -fsanitize=thread)
elseif(SANITIZE STREQUAL "fuzzer")
  # Address as well, and what tells libFuzzer which code an input has reached. Clang's, as it is.
  target_compile_options(project_flags INTERFACE -fsanitize=address,undefined,fuzzer-no-link
    -fno-sanitize-recover=undefined)
  target_link_options(project_flags INTERFACE -fsanitize=address,undefined,fuzzer-no-link)
elseif(SANITIZE)
  message(FATAL_ERROR "SANITIZE is OFF, address, thread or fuzzer, not \"${SANITIZE}\"")
endif()

# What makes a hole in the program harder to use; for what is installed, and not for the tests. A
# sanitizer takes the place of some of it, and an unoptimised build cannot check sizes.
add_library(hardening INTERFACE)
if(PLATFORM STREQUAL "linux" AND NOT SANITIZE)
  target_compile_options(hardening INTERFACE -fPIE -fstack-protector-strong
    -fstack-clash-protection -U_FORTIFY_SOURCE $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
  target_link_options(hardening INTERFACE -pie -Wl,-z,relro,-z,now,-z,noexecstack)
endif()

# platform_service(name SOURCES ... [PACKAGES imported targets] [NEEDS other services])
# One static library per service of the Linux platform, named platform_<name>; all of them together
# make the target platform_linux.
function(platform_service name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PACKAGES;NEEDS" ${ARGN})
  add_library(platform_${name} STATIC ${ARG_SOURCES})
  target_include_directories(platform_${name}
    PUBLIC ${CMAKE_SOURCE_DIR}/platform/include ${CMAKE_SOURCE_DIR}/platform/linux)
  target_link_libraries(platform_${name}
    PRIVATE project_flags hardening PUBLIC PkgConfig::efl Threads::Threads ${ARG_PACKAGES})
  foreach(other IN LISTS ARG_NEEDS)
    target_link_libraries(platform_${name} PUBLIC platform_${other})
  endforeach()
  set_property(GLOBAL APPEND PROPERTY PLATFORM_SERVICES platform_${name})
endfunction()
