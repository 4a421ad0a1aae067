// Random sequences: the controller does what the reference does, and they reach everything that there is to reach.
#include "tests/module/differential/Campaign.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>

using Differential::Campaign;
using Differential::Finding;
using Differential::ModuleDoor;

namespace
{
// Below that the rarest of what is to be reached may be missed by chance.
constexpr std::uint64_t STEPS_TO_REACH_EVERYTHING = 500'000;
} // namespace

TEST(Differential, ControllerDoesWhatTheReferenceDoes)
{
    const std::unique_ptr<ModuleDoor> pDoor = Differential::openDoor();
    Campaign campaign(Differential::options());
    std::cout << "seed " << Differential::options().nSeed << ", " << Differential::options().nSteps << " steps"
              << std::endl;
    const std::optional<Finding> finding = campaign.run(*pDoor);
    ASSERT_FALSE(finding.has_value()) << "seed " << finding->nSeed << " after " << finding->nSteps
                                      << " steps; again with --seed " << finding->nSeed << " --steps 1\n"
                                      << finding->sText;
    std::cout << campaign.steps() << " steps in " << campaign.sequences() << " sequences; "
              << campaign.coverage().summary(pDoor->isPrivate()) << "\n";
    if (campaign.steps() >= STEPS_TO_REACH_EVERYTHING) {
        for (const std::string& sMissing : campaign.coverage().missing(pDoor->isPrivate())) {
            ADD_FAILURE() << "not reached: " << sMissing;
        }
    }
}
