# Writes OUTPUT, the source that defines the build number: the count of the commits in the history of
# SOURCE. A source package has it in the file build-number; other archives have an empty number. Leaves OUTPUT as it is where the number
# is the same.
set(number "")
if(EXISTS ${SOURCE}/build-number)
  file(STRINGS ${SOURCE}/build-number number)
elseif(GIT AND EXISTS ${SOURCE}/.git)
  execute_process(
    COMMAND ${GIT} rev-list --count HEAD
    WORKING_DIRECTORY ${SOURCE}
    OUTPUT_VARIABLE number
    OUTPUT_STRIP_TRAILING_WHITESPACE
    ERROR_QUIET)
endif()
file(CONFIGURE OUTPUT ${OUTPUT} @ONLY CONTENT [[
#include "platform/BuildInfo.h"

namespace brevanholt::platform {

const char* const kBuildNumber = "@number@";

}  // namespace brevanholt::platform
]])
