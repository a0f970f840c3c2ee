# manual.cmake: one man page, written by help2man from PROGRAM's --help and --version, then
# compressed as Debian wants it (gzip -9n). INCLUDE holds the sections that --help does not
# give; each of COMMANDS (comma-separated) adds its own --help, kept as printed.
# INCLUDE may name @DATADIR@, the installed data folder.
# cmake -DHELP2MAN= -DGZIP= -DPROGRAM= -DNAME= -DINCLUDE= -DCOMMANDS= -DDATADIR= -DOUTPUT=
#       -P manual.cmake
string(REGEX REPLACE "\\.gz$" "" page "${OUTPUT}")
file(READ "${INCLUDE}" include)
string(CONFIGURE "${include}" include @ONLY)

string(REPLACE "," ";" commands "${COMMANDS}")
if(commands)
  string(APPEND include "\n[COMMANDS]\n")
  foreach(command IN LISTS commands)
    execute_process(COMMAND "${PROGRAM}" ${command} --help
      OUTPUT_VARIABLE help RESULT_VARIABLE status)
    if(NOT status EQUAL 0)
      message(FATAL_ERROR "${PROGRAM} ${command} --help failed: ${status}")
    endif()
    # roff: a backslash is written \e, and a line may not start with a period or a quote
    string(REPLACE "\\" "\\e" help "${help}")
    string(REGEX REPLACE "(^|\n)([.'])" "\\1\\\\&\\2" help "${help}")
    string(APPEND include ".SS ${command}\n.nf\n${help}.fi\n")
  endforeach()
endif()
file(WRITE "${page}.h2m" "${include}")

execute_process(COMMAND "${HELP2MAN}" --no-info --section=1 "--name=${NAME}"
  "--include=${page}.h2m" "--output=${page}" "${PROGRAM}"
  RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "help2man failed on ${PROGRAM}: ${status}")
endif()
execute_process(COMMAND "${GZIP}" -9nf "${page}" RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "gzip failed on ${page}: ${status}")
endif()
