# Makes the man page PAGE from SOURCE with the program SCDOC, which reads and writes standard streams.
execute_process(COMMAND "${SCDOC}" INPUT_FILE "${SOURCE}" OUTPUT_FILE "${PAGE}" RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  file(REMOVE "${PAGE}")
  message(FATAL_ERROR "${SOURCE}: scdoc refuses it; the line is named above")
endif()
