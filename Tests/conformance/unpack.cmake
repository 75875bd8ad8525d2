# Unpacks the conformance suite's zip ZIP into DESTINATION, once.  A missing
# or unreadable zip fails, and so then does the run that needs it.
if(EXISTS "${DESTINATION}/xmlconf/xmlconf.xml")
  return()
endif()
if(NOT EXISTS "${ZIP}")
  message(FATAL_ERROR "conformance suite zip not found at ${ZIP}")
endif()
file(MAKE_DIRECTORY "${DESTINATION}")
execute_process(COMMAND "${CMAKE_COMMAND}" -E tar xf "${ZIP}"
                WORKING_DIRECTORY "${DESTINATION}" RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "could not unpack ${ZIP}")
endif()
