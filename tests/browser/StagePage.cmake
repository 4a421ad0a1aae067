# Copies the page, its tests, the browser tests, what measures the page and what all of them read into a folder, and
# installs what their lock file names. Run as a script:
#   cmake -DSOURCE=... -DSTAGE=... -DNPM=... -P StagePage.cmake
file(REMOVE_RECURSE "${STAGE}/LivePage/src" "${STAGE}/LivePage/tests" "${STAGE}/tests/browser"
  "${STAGE}/benchmarks")
file(COPY "${SOURCE}/LivePage" DESTINATION "${STAGE}" PATTERN node_modules EXCLUDE PATTERN looks EXCLUDE)
file(COPY "${SOURCE}/tests/browser" DESTINATION "${STAGE}/tests")
file(COPY "${SOURCE}/benchmarks/live_page" DESTINATION "${STAGE}/benchmarks")
file(COPY "${SOURCE}/examples/profiles" DESTINATION "${STAGE}/examples")
file(CREATE_LINK LivePage/node_modules "${STAGE}/node_modules" SYMBOLIC)

file(SHA256 "${STAGE}/LivePage/package-lock.json" wanted)
set(installed "")
if(EXISTS "${STAGE}/installed")
  file(READ "${STAGE}/installed" installed)
endif()
if(NOT installed STREQUAL wanted)
  execute_process(
    COMMAND "${NPM}" ci --prefer-offline --ignore-scripts --no-audit --no-fund --loglevel=error
    WORKING_DIRECTORY "${STAGE}/LivePage" COMMAND_ERROR_IS_FATAL ANY)
  file(WRITE "${STAGE}/installed" "${wanted}")
endif()
