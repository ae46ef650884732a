# The compile and link options of every target of this project, as one target to link to. The
# presets for development make errors of the warnings (CMAKE_COMPILE_WARNING_AS_ERROR); what people
# install does not, because a newer compiler has new ones.
add_library(project_options INTERFACE)
target_compile_options(project_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  # gcc 12 gives the first about assignments inside its own std::string. The other only tells, on arm,
  # that gcc 7 changed how some arguments are passed; nothing here is linked to what is as old.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict -Wno-psabi>)

# Times after 2038 and files above 2 GiB on processors of 32 bits, in everything that is built.
include(CheckTypeSize)
set(CMAKE_EXTRA_INCLUDE_FILES time.h)
check_type_size(time_t TIME_BYTES LANGUAGE CXX)
set(CMAKE_EXTRA_INCLUDE_FILES)
if(TIME_BYTES LESS 8)
  add_compile_definitions(_TIME_BITS=64 _FILE_OFFSET_BITS=64)
endif()

if(NCURSESCLIENT_HARDENING)
  # Processors have different means against jumps to places that are no targets.
  include(CheckCXXCompilerFlag)
  set(processor_hardening "")
  set(CMAKE_REQUIRED_FLAGS -Werror) # clang only warns of the means of another processor
  foreach(flag -fstack-clash-protection -fcf-protection -mbranch-protection=standard)
    string(MAKE_C_IDENTIFIER "COMPILER_HAS${flag}" has_flag)
    check_cxx_compiler_flag(${flag} ${has_flag})
    if(${has_flag})
      list(APPEND processor_hardening ${flag})
    endif()
  endforeach()
  unset(CMAKE_REQUIRED_FLAGS)
  target_compile_options(project_options INTERFACE
    -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong ${processor_hardening} -fPIE)
  target_link_options(project_options INTERFACE
    -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
endif()

if(NCURSESCLIENT_SANITIZE)
  target_compile_options(project_options INTERFACE
    -fsanitize=${NCURSESCLIENT_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(project_options INTERFACE -fsanitize=${NCURSESCLIENT_SANITIZE})
  # gcc says by macros which sanitizers it builds with. clang is given them, with gcc's value.
  string(REPLACE "," ";" sanitizers "${NCURSESCLIENT_SANITIZE}")
  foreach(sanitizer address thread)
    if(sanitizer IN_LIST sanitizers)
      string(TOUPPER __SANITIZE_${sanitizer}__ macro)
      target_compile_definitions(project_options INTERFACE $<$<CXX_COMPILER_ID:Clang>:${macro}=1>)
    endif()
  endforeach()
endif()

# What the client's own code is built with, and only that: tests and practice server are not measured.
add_library(coverage_options INTERFACE)
if(NCURSESCLIENT_COVERAGE)
  # Threads count too, so the counters are atomic.
  target_compile_options(coverage_options INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(coverage_options INTERFACE --coverage -Wl,--wrap=_exit -Wl,--wrap=raise)
  add_library(counted_ends OBJECT cmake/counted_ends.cpp)
  target_compile_definitions(counted_ends PRIVATE
    COUNTER_COMPLAINTS="${CMAKE_BINARY_DIR}/counter_complaints.txt")
endif()
