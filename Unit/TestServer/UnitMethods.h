/** @file
 * The methods of a unit.
 */
#pragma once

#include "Unit/TestServer/MethodTable.h"

class RegulationLoop;

/** @return all methods of the test interface but those that tell of methods. @param loop must outlive them */
MethodTable unitMethods(RegulationLoop& loop);
