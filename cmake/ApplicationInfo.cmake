# What an application bundle's information list would say. An empty value counts as absent.
# TAMBREL_DIAGNOSTICS_ENABLED keeps its type: -DTAMBREL_DIAGNOSTICS_ENABLED:STRING=yes is a text, for which the
# program knows yes, true and 1; with :BOOL, or without a type, it is a Boolean as CMake reads it.
set(TAMBREL_DISPLAY_NAME "Tambrel" CACHE STRING "Name shown to the user")
set(TAMBREL_NAME "${PROJECT_NAME}" CACHE STRING "Name used where there is no display name")
set(TAMBREL_SHORT_VERSION "${PROJECT_VERSION}" CACHE STRING "Version shown to the user")
set(TAMBREL_BUILD_NUMBER "1" CACHE STRING "Build number")
set(TAMBREL_IDENTIFIER "software.kestrune.tambrel" CACHE STRING
  "Application identifier; one that ends in .beta turns diagnostics on")
if(NOT DEFINED CACHE{TAMBREL_DIAGNOSTICS_ENABLED})
  set(TAMBREL_DIAGNOSTICS_ENABLED OFF CACHE BOOL "Diagnostics switch, a Boolean or a text")
endif()

get_property(_type CACHE TAMBREL_DIAGNOSTICS_ENABLED PROPERTY TYPE)
if(_type STREQUAL "STRING" AND TAMBREL_DIAGNOSTICS_ENABLED STREQUAL "")
  set(TAMBREL_DIAGNOSTICS_LITERAL "std::monostate()")
elseif(_type STREQUAL "STRING")
  set(TAMBREL_DIAGNOSTICS_LITERAL "std::string(R\"text(${TAMBREL_DIAGNOSTICS_ENABLED})text\")")
elseif(TAMBREL_DIAGNOSTICS_ENABLED)
  set(TAMBREL_DIAGNOSTICS_LITERAL "true")
else()
  set(TAMBREL_DIAGNOSTICS_LITERAL "false")
endif()
