// The order in which a run takes the sections of a cascade.
#pragma once

#include <cstddef>
#include <vector>

#include "filter/fid_sections.h"

namespace veltrac {

// Places of the sections, from 0, in an order that loses few digits: the given one, unless another saves more
// than one bit. The cascade as a whole stays the same filter.
std::vector<std::size_t> quietOrder(const FidCascade& sections);

}  // namespace veltrac
