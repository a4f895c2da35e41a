# What an application bundle's information list would say. An empty value counts as absent.
# TAMBREL_DIAGNOSTICS_ENABLED keeps its type: -DTAMBREL_DIAGNOSTICS_ENABLED:BOOL=ON is a Boolean,
# -DTAMBREL_DIAGNOSTICS_ENABLED:STRING=yes is a text.
set(TAMBREL_DISPLAY_NAME "Tambrel" CACHE STRING "Name shown to the user")
set(TAMBREL_SHORT_VERSION "${PROJECT_VERSION}" CACHE STRING "Version shown to the user")
set(TAMBREL_BUILD_NUMBER "1" CACHE STRING "Build number")
set(TAMBREL_IDENTIFIER "software.kestrune.tambrel" CACHE STRING
  "Application identifier; one that ends in .beta turns diagnostics on")
if(NOT DEFINED CACHE{TAMBREL_DIAGNOSTICS_ENABLED})
  set(TAMBREL_DIAGNOSTICS_ENABLED OFF CACHE BOOL "Diagnostics switch, a Boolean or a text")
endif()

get_property(_type CACHE TAMBREL_DIAGNOSTICS_ENABLED PROPERTY TYPE)
if(_type STREQUAL "BOOL")
  if(TAMBREL_DIAGNOSTICS_ENABLED)
    set(TAMBREL_DIAGNOSTICS_LITERAL "true")
  else()
    set(TAMBREL_DIAGNOSTICS_LITERAL "false")
  endif()
else()
  set(TAMBREL_DIAGNOSTICS_LITERAL "std::string(\"${TAMBREL_DIAGNOSTICS_ENABLED}\")")
endif()
