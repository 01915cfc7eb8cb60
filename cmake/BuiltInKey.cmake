# Writes HEADER, which holds the public key that updates of the program must be signed with. KEY is that key
# as text; where it is empty it is the local build's own, made by TOOL under KEYS once and kept.
if(KEY STREQUAL "")
  if(NOT EXISTS ${KEYS}/update.pub)
    execute_process(COMMAND ${TOOL} keygen ${KEYS} COMMAND_ERROR_IS_FATAL ANY)
  endif()
  file(READ ${KEYS}/update.pub KEY)
endif()
string(STRIP "${KEY}" KEY)
if(NOT KEY MATCHES "^[0-9a-fA-F]+$")
  message(FATAL_ERROR "The public key has to be hexadecimal digits: '${KEY}'")
endif()
file(CONFIGURE OUTPUT ${HEADER} CONTENT [[
#pragma once

namespace tarnwick {

/// Hexadecimal digits of the public key that updates of the program must be signed with.
inline constexpr char kBuiltInKey[] = "@KEY@";

}  // namespace tarnwick
]] @ONLY)
