# Writes a C++ source with the files of a list into it. Run as a script:
#   cmake -DLIST=assets.txt -DFOLDER=... -DLIBRARIES=... -DOUTPUT=EmbeddedFiles.cpp -P EmbedFiles.cmake
# Each line of the list is a path on the server and a file in the folder, or below node_modules/ in that of the libraries.
# Without LIST the source has no files.

# A string literal takes at least 65536 characters from every compiler; bytes as numbers have no limit.
function(bytes_of file variable)
  file(READ "${file}" hex HEX)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${hex}")
  string(REGEX REPLACE "(('[^']*',){16})" "\\1\n    " bytes "${bytes}")
  set(${variable} "${bytes}" PARENT_SCOPE)
endfunction()

set(arrays "")
set(rows "")
set(count 0)
if(LIST)
  file(STRINGS "${LIST}" lines REGEX "^/")
  foreach(line IN LISTS lines)
    separate_arguments(words UNIX_COMMAND "${line}")
    list(GET words 0 path)
    list(GET words 1 file)
    if(file MATCHES "^node_modules/")
      bytes_of("${LIBRARIES}/${file}" bytes)
    else()
      bytes_of("${FOLDER}/${file}" bytes)
    endif()
    string(APPEND arrays "constexpr char FILE_${count}[] = {\n    ${bytes}'\\0'};\n")
    string(APPEND rows "    {\"${path}\", {FILE_${count}, sizeof FILE_${count} - 1}},\n")
    math(EXPR count "${count} + 1")
  endforeach()
endif()

set(text "#include \"Unit/LivePage/private/EmbeddedFiles.h\"\n\n")
if(count GREATER 0)
  string(APPEND text "namespace\n{\n${arrays}constexpr EmbeddedFile FILES[] = {\n${rows}};\n} // namespace\n\n"
    "std::span<const EmbeddedFile> embeddedFiles()\n{\n    return FILES;\n}\n")
else()
  string(APPEND text "std::span<const EmbeddedFile> embeddedFiles()\n{\n    return {};\n}\n")
endif()
file(WRITE "${OUTPUT}" "${text}")
