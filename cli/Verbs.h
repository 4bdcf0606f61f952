// The verbs, each made in a source of its own.
#pragma once

#include <memory>

#include "cli/Verb.h"

namespace veltrac {

std::unique_ptr<Verb> makeInfoVerb();
std::unique_ptr<Verb> makeImportVerb();
std::unique_ptr<Verb> makeExportVerb();
std::unique_ptr<Verb> makeHeaderVerb();
std::unique_ptr<Verb> makeCutVerb();
std::unique_ptr<Verb> makeJoinVerb();
std::unique_ptr<Verb> makeFormulaVerb();
std::unique_ptr<Verb> makeDerivativeVerb();
std::unique_ptr<Verb> makeIntegralVerb();
std::unique_ptr<Verb> makeFilterVerb();
std::unique_ptr<Verb> makeSpectrumVerb();
std::unique_ptr<Verb> makePlotVerb();
std::unique_ptr<Verb> makeRecordVerb();

}  // namespace veltrac
