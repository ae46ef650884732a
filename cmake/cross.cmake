# Toolchain of a build for another processor, with the libraries of a Debian that lies in a folder;
# scripts/cross makes both. The programs of such a build run under qemu.
#
#   CROSS_TYPE   the GNU name of the processor and its system, such as aarch64-linux-gnu
#   CROSS_ROOT   the folder of its Debian
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES CROSS_TYPE CROSS_ROOT)
string(REGEX MATCH "^[^-]+" CMAKE_SYSTEM_PROCESSOR ${CROSS_TYPE})
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${CROSS_TYPE}-gcc)
set(CMAKE_CXX_COMPILER ${CROSS_TYPE}-g++)
set(CMAKE_SYSROOT ${CROSS_ROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CROSS_ROOT})
set(ENV{PKG_CONFIG_LIBDIR} ${CROSS_ROOT}/usr/lib/${CROSS_TYPE}/pkgconfig:${CROSS_ROOT}/usr/share/pkgconfig)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${CMAKE_SYSTEM_PROCESSOR}-static -L ${CROSS_ROOT})
