# Writes HEADER, which holds the public key that updates of the program must be signed with. KEY is that key
# as text; where it is empty it is the local build's own, made by TOOL under KEYS once and kept.
if(KEY STREQUAL "")
  if(NOT EXISTS ${KEYS}/update.pub)
    execute_process(COMMAND ${TOOL} keygen ${KEYS} COMMAND_ERROR_IS_FATAL ANY)
  endif()
  file(READ ${KEYS}/update.pub KEY)
endif()
string(STRIP "${KEY}" KEY)
execute_process(COMMAND ${TOOL} check-key "${KEY}" RESULT_VARIABLE wrong ERROR_QUIET)
if(wrong)
  message(FATAL_ERROR "TARNWICK_PUBLIC_KEY is no public key.")
endif()
file(CONFIGURE OUTPUT ${HEADER} CONTENT [[
#pragma once

namespace tarnwick {

/// Hexadecimal digits of the public key that updates of the program must be signed with.
inline constexpr char kBuiltInKey[] = "@KEY@";

}  // namespace tarnwick
]] @ONLY)
