# Run by embed_text: NAME, OUT (folder), INPUTS (files joined by "|").
# Each line becomes a raw string literal of its own, so no limit on literal length is met.
string(REPLACE "|" ";" files "${INPUTS}")
set(text "")
foreach(file IN LISTS files)
  file(READ ${file} content)
  string(APPEND text "${content}")
endforeach()
string(REPLACE "\n" ")TXT\" \"\\n\"\n    R\"TXT(" body "${text}")
file(WRITE ${OUT}/${NAME}.h "#pragma once\n\nextern const char ${NAME}[];\n")
file(WRITE ${OUT}/${NAME}.cpp
     "#include \"${NAME}.h\"\n\nconst char ${NAME}[] =\n    R\"TXT(${body})TXT\";\n")
