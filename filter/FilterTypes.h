// The filters that a user can choose: their texts, their fields, the spec-strings made of them.
#pragma once

#include <string>
#include <vector>

namespace veltrac {

// How a filter is run over a range: from a state of zeros on; from the steady state of the first value on, so
// that a high offset does not ring; or forward and back, which delays nothing and squares the gain.
enum class FilterPass { FromZero, Settled, ZeroPhase };

// What the fields of the filter window hold.
struct FilterRequest
{
    int type = 0;        // row of filterTypes()
    double freq0 = 0.0;  // Hz
    double freq1 = 0.0;
    int order = 1;  // the number of points for the moving average
    double rippleDb = 0.0;
    FilterPass pass = FilterPass::FromZero;

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
// What is done, for descriptions: "LpBu4/10, zero phase", "Moving average over 5".
std::string filterWords(const FilterRequest& request);

// Why a request cannot be designed at a sampling frequency (0: there is none), in the window's words; empty
// where it can.
std::string filterComplaint(const FilterRequest& request, double samplingHz);

}  // namespace veltrac
