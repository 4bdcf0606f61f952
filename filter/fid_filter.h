// Making filters block by block.
#pragma once

#include <vector>

#include "filter/fid.h"

namespace veltrac {

struct FidBlock
{
    int type = 'I';
    std::vector<double> coefficients;
};

// One heap block with all blocks and the ending one; null, reported, when memory is short.
FidFilter* makeFidFilter(const std::vector<FidBlock>& blocks);

}  // namespace veltrac
