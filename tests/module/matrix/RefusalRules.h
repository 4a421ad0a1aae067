/** @file
 * What holds of every action in which the handler refused a call, by the table of places alone.
 */
#pragma once

#include "tests/module/matrix/HandlerPlaces.h"

#include <string>

struct Outcome;

namespace RefusalRules
{
/**
 * Where the table says so, a refused call is the last thing that is seen of the action, which fails and changes no more
 * members than the table names; where it does not, the action succeeds. What is traced at level 1 is what the table
 * says about the refused calls, and nothing when there is none.
 *
 * @param nStateAtBegin the machine's state when the action began
 * @param before the members when the action began
 * @param outcome what the action did
 * @return which of it was not so; empty when all was
 */
std::string violation(int nStateAtBegin, const Members& before, const Outcome& outcome);
} // namespace RefusalRules
