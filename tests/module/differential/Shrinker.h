/** @file
 * Makes a sequence that shows something shorter and simpler, as long as it shows it.
 */
#pragma once

#include "tests/module/differential/Operation.h"

#include <functional>

namespace Differential
{
/** @return whether a sequence still shows what is looked for */
using Shows = std::function<bool(const Sequence&)>;

/**
 * Leaves out operations, then brings arguments nearer to 0, until neither helps or @p nTrials are used up.
 * @param sequence one that shows it
 * @return a sequence that shows it
 */
Sequence shrunk(Sequence sequence, const Shows& shows, unsigned int nTrials = 50000);
} // namespace Differential
