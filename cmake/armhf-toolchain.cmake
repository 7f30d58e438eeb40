# Cross build for the TV's CPU: 32-bit ARM, hard-float EABI (Debian's armhf), with Debian's
# arm-linux-gnueabihf compilers. The C and C++ runtime are the cross toolchain's own
# (/usr/arm-linux-gnueabihf); every other library comes from the sysroot that
# scripts/arm-sysroot.sh unpacks (IRC_ARM_SYSROOT, by default in the user's cache folder).
#
# Programs built here run under qemu-arm through CMAKE_CROSSCOMPILING_EMULATOR: ctest prefixes
# test programs with it by itself. A test that starts a built program on its own must prefix it
# with the environment variable IRC_TARGET_RUNNER (words separated by blanks; empty in a native
# build), which tests/CMakeLists.txt sets for every test.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(IRC_ARM_TRIPLET arm-linux-gnueabihf)
set(CMAKE_C_COMPILER ${IRC_ARM_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${IRC_ARM_TRIPLET}-g++)

if(NOT IRC_ARM_SYSROOT)
  if(DEFINED ENV{IRC_ARM_SYSROOT})
    set(IRC_ARM_SYSROOT "$ENV{IRC_ARM_SYSROOT}")
  elseif(DEFINED ENV{XDG_CACHE_HOME})
    set(IRC_ARM_SYSROOT "$ENV{XDG_CACHE_HOME}/ircontrol/armhf-sysroot")
  else()
    set(IRC_ARM_SYSROOT "$ENV{HOME}/.cache/ircontrol/armhf-sysroot")
  endif()
endif()
if(NOT EXISTS "${IRC_ARM_SYSROOT}/.packages")
  message(FATAL_ERROR "no armhf sysroot at ${IRC_ARM_SYSROOT}: run scripts/arm-sysroot.sh")
endif()
# Try-compiles re-read this file; they need the same sysroot.
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES IRC_ARM_SYSROOT)

set(_irc_libdirs "${IRC_ARM_SYSROOT}/usr/lib/${IRC_ARM_TRIPLET}" "${IRC_ARM_SYSROOT}/lib/${IRC_ARM_TRIPLET}")
set(CMAKE_FIND_ROOT_PATH "${IRC_ARM_SYSROOT}" /usr/${IRC_ARM_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_LIBRARY_ARCHITECTURE ${IRC_ARM_TRIPLET})

# pkg-config reads only the sysroot's .pc files and prefixes their paths with it.
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${IRC_ARM_SYSROOT}")
set(ENV{PKG_CONFIG_LIBDIR} "${IRC_ARM_SYSROOT}/usr/lib/${IRC_ARM_TRIPLET}/pkgconfig:${IRC_ARM_SYSROOT}/usr/share/pkgconfig")

# The linker finds the libraries' own dependencies in the sysroot.
set(_irc_link "")
foreach(dir IN LISTS _irc_libdirs)
  string(APPEND _irc_link " -Wl,-rpath-link,${dir}")
endforeach()
set(CMAKE_EXE_LINKER_FLAGS_INIT "${_irc_link}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${_irc_link}")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${_irc_link}")
# GCC notes that the argument passing of some types changed in GCC 7 on ARM: not a warning about
# this code, and every part here is built with the same compiler.
set(CMAKE_C_FLAGS_INIT "-Wno-psabi")
set(CMAKE_CXX_FLAGS_INIT "-Wno-psabi")

# qemu-arm finds the dynamic loader and the C/C++ runtime under -L, the sysroot's libraries
# through the guest's library path (-E sets it for the emulated program only).
string(JOIN ":" _irc_ld_path ${_irc_libdirs})
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L /usr/${IRC_ARM_TRIPLET} -E LD_LIBRARY_PATH=${_irc_ld_path})
