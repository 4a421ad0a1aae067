/** @file
 * The faults that are tried at a recorded call.
 */
#pragma once

#include "tests/module/matrix/FaultyHandler.h"

#include <cstddef>
#include <vector>

/** @return every kind of fault that the operation can have, at its call of this ordinal */
std::vector<Fault> faultsAt(EHandlerCall eCall, std::size_t nOrdinal);
