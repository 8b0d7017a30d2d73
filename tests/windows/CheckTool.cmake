# Runs connectkit.exe as a user would (TOOL with ARGS, separated by blanks,
# under the cross-compiling EMULATOR) and checks its exit code and what it printed:
# OUT must match stdout, ERR stderr (either may be left out).
separate_arguments(ARGS UNIX_COMMAND "${ARGS}")
execute_process(COMMAND ${EMULATOR} ${TOOL} ${ARGS}
  RESULT_VARIABLE code OUTPUT_VARIABLE out ERROR_VARIABLE err)
string(REPLACE "\r\n" "\n" out "${out}")
string(REPLACE "\r\n" "\n" err "${err}")
set(seen "connectkit ${ARGS} exited ${code}\nstdout:\n${out}\nstderr:\n${err}")
if(NOT code STREQUAL "${EXIT}")
  message(FATAL_ERROR "expected exit code ${EXIT}; ${seen}")
endif()
if(DEFINED OUT AND NOT out MATCHES "${OUT}")
  message(FATAL_ERROR "stdout does not match '${OUT}'; ${seen}")
endif()
if(DEFINED ERR AND NOT err MATCHES "${ERR}")
  message(FATAL_ERROR "stderr does not match '${ERR}'; ${seen}")
endif()
