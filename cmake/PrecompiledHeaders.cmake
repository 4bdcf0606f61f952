# Headers of others that nearly every source of a target reads, read once for all of them. The program's own headers
# are not among them: a change of one builds only what names it. Every source still includes what it uses: the
# preset `package` and tools/lint build and look without these (CMAKE_DISABLE_PRECOMPILE_HEADERS).
set(VELTRAC_STANDARD_HEADERS <algorithm> <array> <chrono> <cmath> <cstdint> <filesystem> <fstream> <functional> <limits>
  <map> <memory> <optional> <random> <set> <span> <string> <string_view> <system_error> <utility> <vector>)

function(veltrac_precompile target)
  target_precompile_headers(${target} PRIVATE ${VELTRAC_STANDARD_HEADERS} ${ARGN})
endfunction()
