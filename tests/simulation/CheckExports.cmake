# Fails unless MODULE exports exactly the four entry points of NAME. Needs NM.
execute_process(COMMAND "${NM}" -D --defined-only --format=posix "${MODULE}"
  OUTPUT_VARIABLE symbols RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${NM} cannot read ${MODULE}")
endif()
string(REGEX MATCHALL "[^\n]+" lines "${symbols}")
list(TRANSFORM lines REPLACE " .*" "")
list(SORT lines)
set(expected ${NAME}_Construct ${NAME}_Destruct ${NAME}_Initialize ${NAME}_Uninitialize)
if(NOT lines STREQUAL expected)
  message(FATAL_ERROR "${MODULE} exports \"${lines}\" instead of \"${expected}\"")
endif()
