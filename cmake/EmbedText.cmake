# embed_text(TARGET NAME FILE...)
# Joins the files in order and makes their text available to TARGET as
# `extern const char NAME[];`, declared in "NAME.h".
function(embed_text target name)
  set(out ${CMAKE_CURRENT_BINARY_DIR}/embedded)
  set(script ${PROJECT_SOURCE_DIR}/cmake/embed_text_run.cmake)
  string(REPLACE ";" "|" inputs "${ARGN}")
  add_custom_command(
    OUTPUT ${out}/${name}.cpp ${out}/${name}.h
    COMMAND ${CMAKE_COMMAND} -DNAME=${name} -DOUT=${out} "-DINPUTS=${inputs}" -P ${script}
    DEPENDS ${ARGN} ${script}
    VERBATIM)
  target_sources(${target} PRIVATE ${out}/${name}.cpp ${out}/${name}.h)
endfunction()
