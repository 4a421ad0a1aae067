/** @file
 * Commands as events of the run.
 */
#pragma once

#include "Unit/Process/RegulationLoop.h"
#include "Unit/Telemetry/RunEvent.h"
#include "Unit/TestServer/MethodTable.h"

#include <optional>
#include <string>

/**
 * Makes an event of a call that came to the regulation, with a text such as "requested power 18.00 dBm" and, for
 * programs, the method and its parameters as JSON.
 * @param sFault why it failed, which may have changed something all the same; empty when it was carried out
 * @return none for a call that changes nothing
 */
std::optional<RunEvent> commandEvent(const Method& method, XMLRPC_REQUEST request, const CommandMoment& moment,
                                     const std::string& sFault = {});
