# Unpacks the conformance suite's zip into DESTINATION, once.  The zip is
# taken from the environment variable VRKXML_CONFORMANCE_ZIP if set, else
# from ZIP.  A missing zip is no failure: the runner then skips.
if(DEFINED ENV{VRKXML_CONFORMANCE_ZIP})
  set(ZIP "$ENV{VRKXML_CONFORMANCE_ZIP}")
endif()
if(EXISTS "${DESTINATION}/xmlconf/xmlconf.xml")
  return()
endif()
if(NOT EXISTS "${ZIP}")
  message(STATUS "conformance suite zip not found at ${ZIP}; the conformance run will be skipped")
  return()
endif()
file(MAKE_DIRECTORY "${DESTINATION}")
execute_process(COMMAND "${CMAKE_COMMAND}" -E tar xf "${ZIP}"
                WORKING_DIRECTORY "${DESTINATION}" RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "could not unpack ${ZIP}")
endif()
