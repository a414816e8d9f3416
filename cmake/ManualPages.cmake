# cmake -DTOOL="[EMULATOR...;]PROGRAM" -DFOLDER=FOLDER -P ManualPages.cmake
# The pages of a program, or of its commands, which it writes itself from the texts of its help.
file(REMOVE_RECURSE ${FOLDER})
file(MAKE_DIRECTORY ${FOLDER})
execute_process(COMMAND ${TOOL} --write-manual-pages ${FOLDER} COMMAND_ERROR_IS_FATAL ANY)
file(GLOB pages ${FOLDER}/*.1)
execute_process(COMMAND gzip --best --no-name --force ${pages} COMMAND_ERROR_IS_FATAL ANY)
