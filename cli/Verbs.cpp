#include "cli/Verbs.h"

#include <iterator>

namespace veltrac {

std::vector<std::unique_ptr<Verb>> allVerbs()
{
    static constexpr std::unique_ptr<Verb> (*kMakers[])() = {
        makeInfoVerb,     makeImportVerb,  makeExportVerb,     makeHeaderVerb,   makeCutVerb,
        makeJoinVerb,     makeFormulaVerb, makeDerivativeVerb, makeIntegralVerb, makeFilterVerb,
        makeSpectrumVerb, makePlotVerb,    makeRecordVerb};
    std::vector<std::unique_ptr<Verb>> verbs;
    verbs.reserve(std::size(kMakers));
    for (const auto make : kMakers)
        verbs.push_back(make());
    return verbs;
}

}  // namespace veltrac
