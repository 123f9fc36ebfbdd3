# Compares the functions that the shared libraries export with the list beside this file, so that none joins the public
# face by accident. After an intended change, scripts/exported-names updates the list.
file(READ ${LIST} expected)
execute_process(COMMAND ${SCRIPT} --print ${LIBRARIES} RESULT_VARIABLE status OUTPUT_VARIABLE found ERROR_VARIABLE error)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${SCRIPT} ended with ${status}:\n${error}")
endif()
if(NOT found STREQUAL expected)
  file(WRITE ${WORK_FILE} "${found}")
  execute_process(COMMAND diff -u ${LIST} ${WORK_FILE} OUTPUT_VARIABLE difference)
  message(FATAL_ERROR "the exported names have changed:\n${difference}\n"
                      "If that is meant, run scripts/exported-names; else take MERIDIAN_API off the new names.")
endif()
