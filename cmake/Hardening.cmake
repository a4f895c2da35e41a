# Files come from anywhere: what users run is built with the protections that compiler and processor have. Asserts of the
# standard library stay on; binding all functions at once costs a tenth of a millisecond of the start.
include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)
include(CMakePushCheckState)

set(hardening -D_GLIBCXX_ASSERTIONS)
foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection -mbranch-protection=standard)
  string(MAKE_C_IDENTIFIER "TAMBREL_HAS${flag}" known)
  check_cxx_compiler_flag(${flag} ${known})
  if(${known})
    list(APPEND hardening ${flag})
  endif()
endforeach()

# glibc warns, or takes 2, where it does not know 3 with this compiler.
cmake_push_check_state()
set(CMAKE_REQUIRED_FLAGS "-O2 -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
check_cxx_source_compiles("#include <features.h>
static_assert(__USE_FORTIFY_LEVEL == 3);
int main() {}" TAMBREL_HAS_FORTIFY_SOURCE_3)
cmake_pop_check_state()
list(APPEND hardening -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=$<IF:$<BOOL:${TAMBREL_HAS_FORTIFY_SOURCE_3}>,3,2>)

target_compile_options(tambrel_compiler INTERFACE "$<$<CONFIG:Release>:${hardening}>")
target_link_options(tambrel_compiler INTERFACE "$<$<CONFIG:Release>:-Wl,-z,relro,-z,now>")
# Before the -fPIC of modules, which wins.
string(APPEND CMAKE_CXX_FLAGS_RELEASE " -fPIE")
string(APPEND CMAKE_EXE_LINKER_FLAGS_RELEASE " -pie")
