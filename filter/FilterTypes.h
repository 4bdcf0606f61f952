// The filters that a user can choose: their texts, their fields, the spec-strings made of them.
#pragma once

#include <string>
#include <vector>

namespace veltrac {

// What the fields of the filter window hold.
struct FilterRequest
{
    int type = 0;        // row of filterTypes()
    double freq0 = 0.0;  // Hz
    double freq1 = 0.0;
    int order = 1;  // the number of points for the moving average
    double rippleDb = 0.0;

    bool isMovingAverage() const { return type == 0; }
};

enum class FilterField { None, Order, Ripple, Freq0, Freq1 };

struct FilterType
{
    const char* entry;
    const char* toolTip;
    const char* spec;       // with %1, %2, … for the fields in their order; null for the moving average
    FilterField fields[4];  // None where there are fewer
    int maxOrder;           // 0 where there is no order
    const char* orderText;  // what is said to an order above it

    bool uses(FilterField field) const;
};

const std::vector<FilterType>& filterTypes();

// The spec-string of a request for types 1 and up.
std::string filterSpec(const FilterRequest& request);

// Why a request cannot be designed at a sampling frequency (0: there is none), in the window's words; empty
// where it can.
std::string filterComplaint(const FilterRequest& request, double samplingHz);

}  // namespace veltrac
