# cmake -DUNIT=FILE "-DSOURCES=FILE;..." -P TestUnit.cmake: writes the sources into one file that is
# compiled for all of them. What each has in its unnamed namespace goes to a namespace of its own, or
# two tests could not have a helper of the same name.
set(text "")
foreach(source IN LISTS SOURCES)
  string(MAKE_C_IDENTIFIER "of_${source}" own)
  file(READ "${source}" one)
  string(REPLACE "\nnamespace {\n" "\nnamespace ${own} {\n" one "${one}")
  string(APPEND text "#line 1 \"${source}\"\n${one}")
endforeach()
file(WRITE "${UNIT}" "${text}")
