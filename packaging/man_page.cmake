# Writes the man page of pellago (gzipped) from the program's own help: help2man makes it from
# `pellago --help` and `--version`, and a COMMANDS section holds the help of every subcommand.
#   cmake -DPELLAGO=... -DHELP2MAN=... -DGZIP=... -DOUTPUT=pellago.1.gz -P man_page.cmake

# Text as roff shows it verbatim: backslashes escaped, no line taken for a request.
function(roff_verbatim text result)
  string(REPLACE "\\" "\\e" text "${text}")
  string(REGEX REPLACE "(^|\n)([.'])" "\\1\\\\&\\2" text "${text}")
  set(${result} "${text}" PARENT_SCOPE)
endfunction()

# The commands are those `pellago --help` lists under "Subcommands:".
execute_process(COMMAND ${PELLAGO} --help OUTPUT_VARIABLE main_help COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCH "\nSubcommands:\n(  [a-z][^\n]*\n)+" listed "${main_help}")
string(REGEX MATCHALL "\n  [a-z]+" names "${listed}")
if(NOT names)
  message(FATAL_ERROR "pellago --help lists no subcommands")
endif()

set(commands "[COMMANDS]\n")
foreach(name ${names})
  string(STRIP "${name}" command)
  execute_process(COMMAND ${PELLAGO} ${command} --help OUTPUT_VARIABLE help
                  COMMAND_ERROR_IS_FATAL ANY)
  roff_verbatim("${help}" help)
  string(APPEND commands ".SS \"pellago ${command}\"\n.nf\n${help}.fi\n")
endforeach()

get_filename_component(folder ${OUTPUT} DIRECTORY)
set(include_file ${folder}/commands.h2m)
set(page ${folder}/pellago.1)
file(WRITE ${include_file} "${commands}")
execute_process(
  COMMAND ${HELP2MAN} --no-info --name "merge Excel log sheets into Final Cut Pro XML"
          --section 1 --include ${include_file} --output ${page} ${PELLAGO}
  COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${GZIP} -9nf ${page} COMMAND_ERROR_IS_FATAL ANY)
