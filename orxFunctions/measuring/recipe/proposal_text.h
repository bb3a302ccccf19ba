// A proposed recipe as text that a person edits.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_PROPOSAL_TEXT_H
#define ORXFUNCTIONS_MEASURING_RECIPE_PROPOSAL_TEXT_H

#include <string>
#include <vector>

#include "orxFunctions/measuring/recipe/outline_shapes.h"
#include "orxFunctions/measuring/recipe_proposal.h"

namespace orx::recipes {

struct ProposedFeature {
    std::string name;
    OutlineShape shape;  // in the recipe's coordinates
    double search = 0.0;
};

struct ProposedValue {
    std::string name;
    std::string type;
    std::vector<std::string> of;
    bool hasNominal = false;
    double nominal = 0.0;
    double tolerance = 0.0;
    bool widened = false;  // the tolerance is, to what can be told
};

std::string proposalText(const TProposalOptions& options, const std::vector<ProposedFeature>& features,
                         const std::vector<ProposedValue>& values);

}  // namespace orx::recipes

#endif
