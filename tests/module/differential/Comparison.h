/** @file
 * Does the same to a controller and to the reference, and compares everything after every operation.
 */
#pragma once

#include "tests/module/differential/Coverage.h"
#include "tests/module/differential/ModuleDoor.h"
#include "tests/module/differential/Operation.h"
#include "tests/module/differential/ReferenceLogs.h"

#include <cstddef>
#include <optional>
#include <string>

namespace Differential
{
/** Where the two first differed. */
struct Difference
{
    std::size_t nOperations = 0; /**< of the sequence that were applied, the one that differed included */
    std::string sExpected;       /**< lines of the reference */
    std::string sFound;          /**< lines of the controller */
};

/** Compares controllers of one door with references of one behaviour. */
class Comparison
{
public:
    /** @param door must outlive this */
    explicit Comparison(ModuleDoor& door, const Constants& constants = {}) : m_door(door), m_constants(constants) {}

    /** @return the first difference, or nothing. Operations that are not defined where they stand are left out. */
    std::optional<Difference> run(const Sequence& sequence, Coverage& coverage) const;

private:
    ModuleDoor& m_door;
    Constants m_constants;
};

/** @return what a test prints of a difference: the sequence up to it as an initialiser, and both sides' lines */
std::string textOf(const Sequence& sequence, const Difference& difference);
} // namespace Differential
