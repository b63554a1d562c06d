# Writes the header that names the source revision of the build:
#   cmake -DSOURCE_DIR=<checkout> -DOUTPUT=<header> -P revision.cmake
# The revision is the short commit name of SOURCE_DIR, or "unknown" without git or outside
# a checkout. The header is rewritten only when its text changes, so that a build whose
# revision stayed the same compiles nothing again.
find_package(Git QUIET)
set(revision "")
if(GIT_FOUND)
  execute_process(COMMAND ${GIT_EXECUTABLE} rev-parse --short HEAD WORKING_DIRECTORY ${SOURCE_DIR}
                  OUTPUT_VARIABLE revision OUTPUT_STRIP_TRAILING_WHITESPACE
                  RESULT_VARIABLE failed ERROR_QUIET)
  if(failed)
    set(revision "")
  endif()
endif()
if(NOT revision)
  set(revision "unknown")
endif()

set(text "// Generated at build time by src/console/revision.cmake.\n#define QUILB_REVISION \"${revision}\"\n")
set(old "")
if(EXISTS ${OUTPUT})
  file(READ ${OUTPUT} old)
endif()
if(NOT old STREQUAL text)
  file(WRITE ${OUTPUT} "${text}")
endif()
